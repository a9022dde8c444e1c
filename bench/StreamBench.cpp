#include "bench/Registration.h"

#include <TqOsBase/stream/FileStreamBuf.h>
#include <TqOsBase/stream/TqFlatMemBuf.h>

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// 8 MiB in records of 8 bytes: the size of a point's coordinate, and small enough to stay in the page cache.
constexpr std::size_t kRecord = 8;
constexpr std::size_t kTotal = std::size_t{8} << 20;
constexpr unsigned kWriteBehind = 16384;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;
using BufPtr = std::unique_ptr<TqFileStreamBuf>;

class TempFile {
public:
    explicit TempFile(bool filled) {
        char pattern[] = "/tmp/tqbenchXXXXXX";
        const int descriptor = ::mkstemp(pattern);
        if (descriptor < 0)
            std::abort();
        ::close(descriptor);
        path = pattern;
        wide.assign(path.begin(), path.end());
        if (filled) {
            const std::vector<char> bytes(kTotal, 'x');
            const FilePtr file(std::fopen(path.c_str(), "wb"));
            if (std::fwrite(bytes.data(), 1, kTotal, file.get()) != kTotal)
                std::abort();
        }
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() { std::remove(path.c_str()); }

    std::string path;
    std::wstring wide;
};

void countRecords(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kTotal));
}

void readAll(TqStreamBuf& stream) {
    unsigned char record[kRecord];
    for (std::size_t done = 0; done < kTotal; done += kRecord) {
        stream.readBytes(record, kRecord);
        benchmark::DoNotOptimize(record);
    }
}

void readAll(std::FILE* file) {
    unsigned char record[kRecord];
    for (std::size_t done = 0; done < kTotal; done += kRecord) {
        if (std::fread(record, kRecord, 1, file) != 1)
            std::abort();
        benchmark::DoNotOptimize(record);
    }
}

void writeAll(TqStreamBuf& stream) {
    unsigned char record[kRecord] = {1, 2, 3, 4, 5, 6, 7, 8};
    for (std::size_t done = 0; done < kTotal; done += kRecord) {
        benchmark::DoNotOptimize(record);
        stream.writeBytes(record, kRecord);
    }
}

void writeAll(std::FILE* file) {
    unsigned char record[kRecord] = {1, 2, 3, 4, 5, 6, 7, 8};
    for (std::size_t done = 0; done < kTotal; done += kRecord) {
        benchmark::DoNotOptimize(record);
        if (std::fwrite(record, kRecord, 1, file) != 1)
            std::abort();
    }
}

void fileReadOurs(benchmark::State& state) {
    const TempFile temp(true);
    for (auto _ : state) {
        const BufPtr stream(createFileIStreamBuf(temp.wide.c_str(), nullptr, TqIO::kAccessRead, TqIO::kShareDenyNone,
                                                 TqIO::kOpenExisting));
        readAll(*stream);
    }
    countRecords(state);
}

void fileReadStdio(benchmark::State& state) {
    const TempFile temp(true);
    for (auto _ : state)
        readAll(FilePtr(std::fopen(temp.path.c_str(), "rb")).get());
    countRecords(state);
}

void fileWriteOurs(benchmark::State& state) {
    const TempFile temp(false);
    for (auto _ : state) {
        const BufPtr stream(createFileOStreamBuf(temp.wide.c_str(), nullptr, TqIO::kAccessWrite, TqIO::kShareDenyNone,
                                                 TqIO::kCreateAlways, kWriteBehind));
        writeAll(*stream);
        stream->close();
    }
    countRecords(state);
}

void fileWriteStdio(benchmark::State& state) {
    const TempFile temp(false);
    for (auto _ : state)
        writeAll(FilePtr(std::fopen(temp.path.c_str(), "wb")).get());
    countRecords(state);
}

void memoryReadOurs(benchmark::State& state) {
    std::vector<unsigned char> bytes(kTotal, 'x');
    TqFlatMemBuf flat;
    flat.open(bytes.data(), kTotal, 0);
    for (auto _ : state) {
        flat.rewind();
        readAll(flat);
    }
    countRecords(state);
}

void memoryReadStdio(benchmark::State& state) {
    std::vector<char> bytes(kTotal, 'x');
    for (auto _ : state)
        readAll(FilePtr(::fmemopen(bytes.data(), kTotal, "rb")).get());
    countRecords(state);
}

// Growing from nothing is part of the work on both sides.
void memoryWriteOurs(benchmark::State& state) {
    for (auto _ : state) {
        TqFlatMemBuf flat;
        writeAll(flat);
        benchmark::DoNotOptimize(flat.buffer());
    }
    countRecords(state);
}

void memoryWriteStdio(benchmark::State& state) {
    for (auto _ : state) {
        char* data = nullptr;
        std::size_t size = 0;
        writeAll(FilePtr(::open_memstream(&data, &size)).get());
        std::free(data);
    }
    countRecords(state);
}

// Writing again over what is there, so that growing plays no part.
void memoryRewriteOurs(benchmark::State& state) {
    TqFlatMemBuf flat;
    flat.reserve(kTotal);
    for (auto _ : state) {
        flat.rewind();
        writeAll(flat);
    }
    countRecords(state);
}

void memoryRewriteStdio(benchmark::State& state) {
    std::vector<char> bytes(kTotal);
    for (auto _ : state)
        writeAll(FilePtr(::fmemopen(bytes.data(), kTotal, "wb")).get());
    countRecords(state);
}

[[maybe_unused]] const bool g_registered = [] {
    bench::add("stream/file-read-8B/ours", fileReadOurs);
    bench::add("stream/file-read-8B/fread", fileReadStdio);
    bench::add("stream/file-write-8B/ours", fileWriteOurs);
    bench::add("stream/file-write-8B/fwrite", fileWriteStdio);
    bench::add("stream/memory-read-8B/ours", memoryReadOurs);
    bench::add("stream/memory-read-8B/fmemopen", memoryReadStdio);
    bench::add("stream/memory-write-8B/ours", memoryWriteOurs);
    bench::add("stream/memory-write-8B/open_memstream", memoryWriteStdio);
    bench::add("stream/memory-rewrite-8B/ours", memoryRewriteOurs);
    bench::add("stream/memory-rewrite-8B/fmemopen", memoryRewriteStdio);
    return true;
}();

} // namespace
