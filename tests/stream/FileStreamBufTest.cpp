#include "stream/StreamTest.h"

#include <TqOsBase/diag/TqTracer.h>
#include <TqOsBase/stream/OpenStream.h>

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace streamtest;
using std::uint32_t;
using std::uint64_t;

TEST(FileStreamBuf, PositionsBeyondFourGibibytesAreExact) {
    constexpr uint64_t kFar = (uint64_t{5} << 32) + 3;
    const TempFolder folder;
    const std::wstring name = folder.wide("sparse");
    for (const Kind kind : {kPlain, kOutput}) {
        const BufPtr buf = openForUpdate(kind, name);
        EXPECT_EQ(buf->seek(kFar, TqIO::kSeekStart), 0U);
        buf->writeBytes(bytesOf("far").data(), 3);
        EXPECT_EQ(buf->tell(), kFar + 3);
        EXPECT_EQ(buf->length(), kFar + 3);
        EXPECT_EQ(buf->readByte(kFar + 1), 'a');
        buf->setByte(kFar + 2, 'R');
        buf->close();
        const BufPtr input = openForInput(name);
        ASSERT_EQ(input->length(), kFar + 3);
        EXPECT_EQ(input->seek(3, TqIO::kSeekEnd), kFar);
        unsigned char text[3] = {};
        input->readBytes(text, 3);
        EXPECT_EQ(std::memcmp(text, "faR", 3), 0);
        EXPECT_EQ(thrownBy([&] { input->getBytes(kFar + 1, text, 3); }), kEndOfFile);
        EXPECT_EQ(input->tell(), kFar + 3);
    }
}

TEST(FileIStreamBuf, MappedFileIsReadAsMemory) {
    const TempFolder folder;
    const Bytes text = bytesOf("0123456789");
    writeFile(folder.path("f"), text);
    const BufPtr buf = openForInput(folder.wide("f"));
    unsigned char got[16] = {};
    buf->getBytes(got, 4);
    EXPECT_EQ(buf->tell(), 4U) << "the input buffer's get advances";
    buf->readBytes(got + 4, 6);
    EXPECT_EQ(std::memcmp(got, text.data(), 10), 0);
    EXPECT_TRUE(buf->isEOS());
    EXPECT_EQ(thrownBy([&] { buf->readByte(); }), kEndOfFile);
    buf->readBytes(got, 0);

    struct Row {
        uint64_t start, offset;
        int type;
        uint64_t target;
        bool isRefused;
    };
    const Row rows[] = {
        {0, 0, 3, 10, false}, {3, 10, 0, 10, false},       {3, 11, 0, 0, true},         {3, 7, 1, 10, false},
        {3, 8, 1, 0, true},   {3, UINT64_MAX, 1, 0, true}, {3, 3, 2, 0, false},         {3, 4, 2, 0, true},
        {3, 10, 3, 0, false}, {3, 11, 3, 0, true},         {3, UINT64_MAX, 3, 0, true}, {3, UINT64_MAX - 1, 0, 0, true},
        {3, 5, 4, 0, false},  {3, 5, -1, 0, false},
    };
    for (const Row& row : rows) {
        buf->seek(row.start, TqIO::kSeekStart);
        uint64_t result = 99;
        EXPECT_EQ(thrownBy([&] { result = buf->seek(row.offset, static_cast<TqIO::SeekType>(row.type)); }),
                  row.isRefused ? kOutOfFile : L"");
        EXPECT_EQ(result, row.isRefused ? 99 : row.target);
        EXPECT_EQ(buf->tell(), row.isRefused ? row.start : row.target);
    }

    buf->seek(2, TqIO::kSeekStart);
    const Refusal refusals[] = {
        {kEndOfFile, [&] { buf->readBytes(got, 9); }},      {kEndOfFile, [&] { buf->getBytes(got, UINT32_MAX); }},
        {kEndOfFile, [&] { buf->getBytes(9, got, 2); }},    {kOutOfFile, [&] { buf->getBytes(11, got, 0); }},
        {kOutOfBuffer, [&] { buf->readBytes(9, got, 2); }}, {kOutOfBuffer, [&] { buf->writeBytes(9, got, 2); }},
        {kWriteError, [&] { buf->writeBytes(3, got, 2); }}, {kWriteError, [&] { buf->writeBytes(got, 2); }},
        {kWriteError, [&] { buf->setBytes(got, 2); }},      {kWriteError, [&] { buf->setBytes(0, got, 2); }},
        {kInternalError, [&] { buf->truncate(); }},
    };
    expectRefusals(refusals);
    EXPECT_EQ(buf->tell(), 2U);
    buf->getBytes(9, got, 1);
    EXPECT_EQ(got[0], '9');
    EXPECT_EQ(buf->tell(), 10U);
    EXPECT_EQ(readFile(folder.path("f")), text);
    buf->close();
    EXPECT_EQ(buf->length(), 0U);
}

TEST(FileIStreamBuf, WhatCannotBeMappedIsReadThroughTheStream) {
    const TempFolder folder;
    writeFile(folder.path("empty"), {});
    const BufPtr buf = openForInput(folder.wide("empty"));
    ASSERT_NE(buf->fileName(), nullptr);
    EXPECT_EQ(buf->length(), 0U);
    unsigned char byte = 7;
    buf->readBytes(&byte, 1);
    EXPECT_EQ(byte, 7) << "a short read is not reported";
    writeFile(folder.path("empty"), bytesOf("grown"));
    EXPECT_EQ(buf->length(), 5U);
    buf->getBytes(1, &byte, 1);
    EXPECT_EQ(byte, 'r');
    EXPECT_EQ(buf->tell(), 2U);
    EXPECT_EQ(thrownBy([&] { buf->truncate(); }), kInternalError);
    EXPECT_EQ(thrownBy([&] { buf->setBytes(0, &byte, 1); }), kWriteError);

    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const int writer = ::open(folder.path("pipe").c_str(), O_RDWR);
    ASSERT_EQ(::write(writer, "pipe", 4), 4);
    const BufPtr pipe = openForInput(folder.wide("pipe"));
    EXPECT_EQ(pipe->length(), 0U);
    EXPECT_EQ(pipe->tell(), UINT64_MAX) << "no position";
    EXPECT_EQ(pipe->readByte(), 'p');
    EXPECT_EQ(thrownBy([&] { pipe->seek(2, TqIO::kSeekStart); }), kInternalError);
    EXPECT_EQ(pipe->seek(UINT64_MAX, TqIO::kSeekStart), UINT64_MAX) << "quietly";
    ::close(writer);
}

TEST(FileOStreamBuf, ReachesTheFileInPiecesOfTheWriteBehindBuffer) {
    const TempFolder folder;
    const auto size = [&] { return std::filesystem::file_size(folder.path("f")); };
    const BufPtr buf = openForUpdate(kOutput, folder.wide("f"));
    // Unbuffered below, so that what is flushed shows in the file at once.
    ASSERT_EQ(std::setvbuf(static_cast<std::FILE*>(buf->fileHandle()), nullptr, _IONBF, 0), 0);
    const Bytes piece(2000, 'p');
    for (unsigned i = 1; i <= 10; ++i) {
        buf->writeBytes(piece.data(), 2000);
        EXPECT_EQ(size(), i < 9 ? 0U : 16000U) << "write " << i;
        EXPECT_EQ(buf->tell(), i * 2000U);
        EXPECT_EQ(buf->length(), i * 2000U);
    }
    const Bytes large(20000, 'q');
    buf->writeBytes(large.data(), 20000);
    EXPECT_EQ(size(), 40000U) << "straight through";
    const Bytes full(16384, 'r');
    buf->writeBytes(full.data(), 16384);
    EXPECT_EQ(size(), 40000U) << "just fits";
    buf->setBytes(40000, bytesOf("head").data(), 4);
    EXPECT_EQ(size(), 40000U) << "changed while pending";
    buf->writeByte('s');
    EXPECT_EQ(size(), 56384U);
    buf->close();
    EXPECT_EQ(size(), 56385U);
    const Bytes written = readFile(folder.path("f"));
    EXPECT_EQ(std::memcmp(written.data() + 39998, "qqheadrr", 8), 0);
    EXPECT_EQ(written.back(), 's');
}

TEST(FileStreamBuf, LayoutKeepsItsOrder) {
    const TempFolder folder;
    const BufPtr buf = openForUpdate(kPlain, folder.wide("f"));
    buf->writeByte('x');
    unsigned char raw[40] = {};
    std::memcpy(raw, static_cast<void*>(buf.get()), sizeof raw);
    const auto field = [&](std::size_t offset, auto value) {
        std::memcpy(&value, raw + offset, sizeof value);
        return value;
    };
    EXPECT_EQ(field(8, static_cast<void*>(nullptr)), buf->fileHandle());
    EXPECT_EQ(field(16, static_cast<const wchar_t*>(nullptr)), buf->fileName());
    EXPECT_EQ(field(24, 0), buf->shareMode());
    EXPECT_EQ(raw[28], 1) << "dirty";
    EXPECT_EQ(field(32, 0), ::fileno(static_cast<std::FILE*>(buf->fileHandle())));
    EXPECT_EQ(field(36, 0), 0) << "registered";
}

TEST(FileStreamBuf, TakesOverAnOpenStream) {
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(std::fwrite("0123456789", 1, 10, file), 10U);
    const BufPtr buf(createFileIOStreamBuf(file));
    EXPECT_EQ(buf->fileHandle(), file);
    EXPECT_EQ(buf->fileName(), nullptr);
    EXPECT_EQ(buf->length(), 10U) << "what was still in the stream included";
    EXPECT_EQ(buf->tell(), 10U);
    EXPECT_EQ(buf->readByte(4), '4');
    buf->rewind();
    EXPECT_EQ(buf->readByte(), '0');
    buf->writeByte('b');
    EXPECT_EQ(buf->readByte(), '2') << "reading and writing may follow each other";
    EXPECT_EQ(buf->readByte(1), 'b');
    for (const std::uintptr_t none : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
        const BufPtr empty(createFileIOStreamBuf(reinterpret_cast<void*>(none)));
        EXPECT_EQ(thrownBy([&] { empty->writeByte(1); }), kWriteError);
        EXPECT_EQ(empty->length(), 0U);
    }
}

TEST(FileStreamBuf, CopiesBetweenFiles) {
    const TempFolder folder;
    Bytes source(10000);
    for (std::size_t i = 0; i < source.size(); ++i)
        source[i] = static_cast<unsigned char>(1 + i * 7 % 255);
    writeFile(folder.path("in"), source);
    const BufPtr in = openForInput(folder.wide("in"));
    const BufPtr out = openForUpdate(kOutput, folder.wide("out"));
    EXPECT_EQ(thrownBy([&] { out->copyFrom(in.get(), 9000, 10001); }), kEndOfFile);
    EXPECT_EQ(in->tell(), 0U);
    in->copyTo(out.get(), 10, 20);
    const BufPtr plain = openForUpdate(kPlain, folder.wide("in"), TqIO::kOpenExisting);
    out->copyFrom(plain.get(), 5000, 11000);
    out->close();
    Bytes expected(10, 0);
    expected.insert(expected.end(), source.begin(), source.begin() + 10);
    expected.insert(expected.end(), source.begin() + 5000, source.end());
    expected.resize(20 + 6000); // a read that falls short leaves zeros
    EXPECT_EQ(readFile(folder.path("out")), expected);
}

BufPtr openFull(Kind kind) {
    return openForUpdate(kind, L"/dev/full", TqIO::kOpenExisting);
}

// A stream in which bytes of the caller's wait.
BufPtr takeOverFull() {
    std::FILE* const full = std::fopen("/dev/full", "w");
    std::fputs("bytes", full);
    return BufPtr(createFileIOStreamBuf(full));
}

TEST(FileStreamBuf, FullDiskIsReportedAndTheFileClosed) {
    const Bytes large(100000, 'x');
    for (const Kind kind : {kPlain, kOutput}) {
        const BufPtr buf = openFull(kind);
        ASSERT_NE(buf->fileName(), nullptr);
        EXPECT_EQ(thrownBy([&] { buf->writeBytes(large.data(), 100000); }), kWriteError);
        EXPECT_EQ(thrownBy([&] { buf->writeBytes(large.data(), 1); }), kWriteError) << "the stream stays in error";
        EXPECT_EQ(thrownBy([&] { buf->close(); }), L"") << "nothing was accepted";

        // Lost where the C stream is emptied, and, of the output buffer, before that.
        for (const uint32_t pendingBytes : {100U, kind == kPlain ? 200U : 10000U}) {
            const BufPtr pending = openFull(kind);
            pending->writeBytes(large.data(), pendingBytes);
            EXPECT_EQ(thrownBy([&] { pending->close(); }), kWriteError);
            EXPECT_EQ(pending->fileName(), nullptr);
            EXPECT_EQ(pending->tell(), 0U);
            EXPECT_EQ(thrownBy([&] { pending->close(); }), L"") << "once";
        }
        // Accepted bytes that an earlier call has lost: close() says so again, the destructor need not.
        for (const auto& lose : std::vector<std::function<void(TqFileStreamBuf&)>>{
                 [&](TqFileStreamBuf& b) { b.seek(0, TqIO::kSeekStart); },
                 [&](TqFileStreamBuf& b) { b.writeBytes(large.data(), 100000); },
                 [&](TqFileStreamBuf& b) { b.readByte(); },
             }) {
            for (const bool closes : {true, false}) {
                const BufPtr lost = openFull(kind);
                lost->writeBytes(large.data(), 10);
                EXPECT_NE(thrownBy([&] { lose(*lost); }), L"");
                EXPECT_EQ(thrownBy([&] { lost->writeBytes(large.data(), 10); }), kWriteError);
                EXPECT_EQ(thrownBy([&] { lost->setBytes(0, large.data(), 1); }), kWriteError);
                if (closes) {
                    EXPECT_EQ(thrownBy([&] { lost->close(); }), kWriteError);
                }
            }
        }
        const BufPtr reopened = openFull(kind);
        reopened->writeBytes(large.data(), 100);
        auto& impl = dynamic_cast<TqFileStreamBufImpl&>(*reopened);
        EXPECT_EQ(
            thrownBy([&] { impl.open(L"/dev/null", TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting); }),
            kWriteError);
        EXPECT_EQ(reopened->fileName(), nullptr);
    }
    const BufPtr plain = openFull(kPlain);
    EXPECT_EQ(thrownBy([&] { plain->setBytes(large.data(), 10); }), kWriteError);

    const TempFolder folder;
    writeFile(folder.path("f"), bytesOf("read only"));
    for (const bool closes : {true, false}) { // no accepted byte is lost
        const BufPtr readOnly = openForUpdate(kPlain, folder.wide("f"), TqIO::kOpenExisting, TqIO::kAccessRead);
        EXPECT_EQ(thrownBy([&] { readOnly->writeBytes(large.data(), 10); }), kWriteError);
        std::FILE* const directory = std::fopen("/", "r");
        EXPECT_EQ(std::fgetc(directory), EOF);
        EXPECT_NE(std::ferror(directory), 0);
        const BufPtr marked(createFileIOStreamBuf(directory));
        if (closes) {
            EXPECT_EQ(thrownBy([&] { readOnly->close(); }), L"");
            EXPECT_EQ(thrownBy([&] { marked->close(); }), L"");
        }
    }
    EXPECT_EQ(thrownBy([] { takeOverFull()->close(); }), kWriteError) << "the caller's bytes";
}

TEST(FileStreamBufDeathTest, BytesLostUnsaidEndTheProcessInTheDestructor) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const Kind kind : {kPlain, kOutput})
        for (const bool seeks : {false, true})
            EXPECT_DEATH(
                {
                    BufPtr buf = openFull(kind);
                    buf->writeByte('x');
                    if (seeks && buf->seek(0xFFFFFFFF, TqIO::kSeekStart) == UINT64_MAX) // quietly
                        buf.reset();
                    if (!seeks)
                        destoryFileIOStreamBuf(buf.release());
                },
                "");
    EXPECT_DEATH(takeOverFull(), "");
}

std::vector<std::wstring> g_traces;

// What no call has thrown is traced, once; what one has is not.
TEST(FileStreamBuf, OwningPointersReportWhatIsLostInsteadOfEndingTheProcess) {
    TqTracer::setTraceFunctionW([](const wchar_t* text) { g_traces.emplace_back(text); });
    const auto owned = [](Kind kind) { return tq::StreamPointer(openFull(kind).release()); };
    for (const Kind kind : {kPlain, kOutput}) {
        owned(kind)->writeByte('x');
        EXPECT_EQ(g_traces, std::vector<std::wstring>{L"/dev/full: Write file error!\n"});
        g_traces.clear();
        const auto lost = owned(kind);
        lost->writeByte('x');
        EXPECT_EQ(thrownBy([&] { lost->seek(0, TqIO::kSeekStart); }).empty(), false);
    }
    owned(kPlain);
    EXPECT_EQ(g_traces.size(), 0U);
    tq::StreamPointer(takeOverFull().release()).reset();
    EXPECT_EQ(g_traces, std::vector<std::wstring>{L"a file without a name: Write file error!\n"});
    g_traces.clear();

    // The default hook reads formats; a name is none.
    TqTracer::setTraceFunctionW(TqTracer::defaultTraceW);
    const TempFolder folder;
    std::filesystem::create_symlink("/dev/full", folder.path("100%s%n"));
    testing::internal::CaptureStdout();
    tq::openOutput(folder.wide("100%s%n"), TqIO::kOpenExisting)->writeByte('x');
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), folder.path("100%s%n") + ": Write file error!\n");
}

TEST(FileStreamBuf, WhatIsAppendedAfterTheEndWasReadIsReadOn) {
    const TempFolder folder;
    for (const Kind kind : {kPlain, kOutput}) {
        writeFile(folder.path("f"), bytesOf("ab"));
        const BufPtr buf = openForUpdate(kind, folder.wide("f"), TqIO::kOpenExisting);
        unsigned char got[6] = {};
        buf->readBytes(got, 3);
        std::ofstream(folder.path("f"), std::ios::app) << "cdef";
        EXPECT_FALSE(buf->isEOS());
        buf->readBytes(got + 2, 1);
        EXPECT_EQ(buf->readByte(), 'd');
        TqFlatMemBuf copy;
        copy.copyFrom(buf.get(), 0, 0);
        EXPECT_EQ(Bytes(copy.buffer(), copy.buffer() + copy.length()), bytesOf("ef"));
        EXPECT_EQ(Bytes(got, got + 3), bytesOf("abc"));
    }
}

TEST(FileStreamBuf, ReadingWhereReadingIsNotAllowedSpoilsNoLaterWrite) {
    const TempFolder folder;
    for (const Kind kind : {kPlain, kOutput}) {
        const BufPtr buf = openForUpdate(kind, folder.wide("w"), TqIO::kCreateAlways, TqIO::kAccessWrite);
        buf->writeBytes(bytesOf("ab").data(), 2);
        EXPECT_EQ(buf->readByte(), 0);
        buf->writeBytes(bytesOf("cd").data(), 2);
        buf->close();
        EXPECT_EQ(readFile(folder.path("w")), bytesOf("abcd"));
    }
}

} // namespace
