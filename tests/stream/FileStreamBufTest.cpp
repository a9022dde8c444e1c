#include "stream/StreamTest.h"

namespace {

using namespace streamtest;

TEST(FileStreamBuf, PositionsBeyondFourGibibytesAreExact) {
    constexpr uint64_t kFar = (uint64_t{5} << 32) + 3;
    const TempFolder folder;
    for (const Kind kind : {kPlain, kOutput}) {
        const BufPtr buf = openForUpdate(kind, folder.wide(L"sparse"));
        buf->seek(kFar, TqIO::kSeekStart);
        buf->writeBytes(bytesOf("far").data(), 3);
        EXPECT_TRUE(buf->tell() == kFar + 3 && buf->length() == kFar + 3 && buf->readByte(kFar + 1) == 'a');
        buf->setByte(kFar + 2, 'R');
        buf->close();
        const BufPtr input = openForInput(folder.wide(L"sparse"));
        EXPECT_TRUE(input->seek(1, TqIO::kSeekEnd) == kFar + 2 && input->readByte() == 'R');
    }
}

TEST(FileIStreamBuf, MappedFileIsReadAsMemory) {
    const TempFolder folder;
    const Bytes text = bytesOf("0123456789");
    writeFile(folder.path("f"), text);
    const BufPtr buf = openForInput(folder.wide(L"f"));
    unsigned char got[16] = {};
    buf->getBytes(got, 4);
    EXPECT_EQ(buf->tell(), 4U) << "the input buffer's get advances";
    buf->readBytes(got + 4, 6);
    EXPECT_EQ(Bytes(got, got + 10), text);
    constexpr uint64_t kRefused = 99;
    const std::tuple<uint64_t, uint64_t, int, uint64_t> rows[] = {
        {0, 0, 3, 10},        {3, 10, 0, 10},      {3, 11, 0, kRefused},
        {3, 7, 1, 10},        {3, 8, 1, kRefused}, {3, UINT64_MAX, 1, kRefused},
        {3, 3, 2, 0},         {3, 4, 2, kRefused}, {3, 10, 3, 0},
        {3, 11, 3, kRefused}, {3, 5, 4, 0},        {3, UINT64_MAX, 3, kRefused},
        {3, 5, -1, 0}};
    for (const auto& [start, offset, type, target] : rows) {
        const auto seek = [&, by = offset, how = type] { return buf->seek(by, static_cast<TqIO::SeekType>(how)); };
        buf->seek(start, TqIO::kSeekStart);
        if (target == kRefused)
            expectRefused(kOutOfFile, {seek});
        else
            EXPECT_EQ(seek(), target);
        EXPECT_EQ(buf->tell(), target == kRefused ? start : target);
    }
    buf->seek(2, TqIO::kSeekStart);
    expectRefused(kEndOfFile, {[&] { buf->readBytes(got, 9); }, [&] { buf->getBytes(got, UINT32_MAX); },
                               [&] { buf->getBytes(9, got, 2); }});
    expectRefused(kOutOfFile, {[&] { buf->getBytes(11, got, 0); }});
    expectRefused(kOutOfBuffer, {[&] { buf->readBytes(9, got, 2); }, [&] { buf->writeBytes(9, got, 2); }});
    expectRefused(kWriteError, {[&] { buf->writeBytes(3, got, 2); }, [&] { buf->writeBytes(got, 2); },
                                [&] { buf->setBytes(got, 2); }, [&] { buf->setBytes(0, got, 2); }});
    expectRefused(kInternalError, {[&] { buf->truncate(); }});
    EXPECT_EQ(buf->tell(), 2U);
    buf->getBytes(9, got, 1);
    EXPECT_EQ(got[0], '9');
    expectRefused(kEndOfFile, {[&] { buf->readByte(); }});
    buf->close();
    EXPECT_EQ(buf->length(), 0U);
}

TEST(FileIStreamBuf, WhatCannotBeMappedIsReadThroughTheStream) {
    const TempFolder folder;
    writeFile(folder.path("empty"), {});
    const BufPtr buf = openForInput(folder.wide(L"empty"));
    unsigned char byte = 7;
    buf->readBytes(&byte, 1);
    EXPECT_EQ(byte + buf->length(), 7U) << "a short read is not reported";
    writeFile(folder.path("empty"), bytesOf("grown"));
    EXPECT_EQ(buf->length(), 5U);
    buf->getBytes(1, &byte, 1);
    EXPECT_TRUE(byte == 'r' && buf->tell() == 2);
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const int writer = ::open(folder.path("pipe").c_str(), O_RDWR);
    ASSERT_EQ(::write(writer, "pipe", 4), 4);
    const BufPtr pipe = openForInput(folder.wide(L"pipe"));
    EXPECT_TRUE(pipe->length() == 0 && pipe->tell() == UINT64_MAX && pipe->readByte() == 'p') << "no position";
    EXPECT_EQ(pipe->seek(UINT64_MAX, TqIO::kSeekStart), UINT64_MAX) << "quietly";
    expectRefused(kInternalError, {[&] { buf->truncate(); }, [&] { pipe->seek(2, TqIO::kSeekStart); }});
    expectRefused(kWriteError, {[&] { buf->setBytes(0, &byte, 1); }});
    ::close(writer);
}

TEST(FileOStreamBuf, ReachesTheFileInPiecesOfTheWriteBehindBuffer) {
    const TempFolder folder;
    // Where nothing can be read the C library's own buffer is off: what is flushed shows in the file at once.
    const BufPtr buf = openForUpdate(kOutput, folder.wide(L"f"), TqIO::kCreateAlways, TqIO::kAccessWrite);
    const auto sizeAfter = [&](uint32_t written) {
        buf->writeBytes(Bytes(written, 'p').data(), written);
        return std::filesystem::file_size(folder.path("f"));
    };
    EXPECT_TRUE(sizeAfter(16000) == 0U && sizeAfter(2000) == 16000U);
    EXPECT_EQ(sizeAfter(22000), 40000U) << "straight through";
    EXPECT_EQ(sizeAfter(16384), 40000U) << "just fits";
    buf->setBytes(40000, bytesOf("head").data(), 4);
    EXPECT_EQ(sizeAfter(1), 56384U);
    buf->close();
    const Bytes written = readFile(folder.path("f"));
    ASSERT_EQ(written.size(), 56385U);
    EXPECT_EQ(std::memcmp(&written[39998], "ppheadpp", 8), 0) << "changed while pending";

    const std::wstring name = folder.wide(L"g");
    TqFileOStreamBuf large(name.c_str(), nullptr, TqIO::kAccessWrite, TqIO::kShareDenyNone, TqIO::kCreateAlways, 0);
    EXPECT_FALSE(large.setBlockSize(4095));
    EXPECT_TRUE(large.setBlockSize(UINT32_MAX) && large.setBlockSize(70000)) << "17 blocks of 4,096";
    const Bytes bytes = pattern(96000);
    for (std::size_t at = 0; at < bytes.size(); at += 16000) {
        large.writeBytes(&bytes[at], 16000);
        EXPECT_EQ(std::filesystem::file_size(folder.path("g")) != 0, at == 80000) << at;
        EXPECT_FALSE(large.setBlockSize(4096)) << "too late";
    }
    EXPECT_EQ(large.length(), bytes.size());
    large.close();
    EXPECT_FALSE(large.setBlockSize(4096)) << "no file";
    EXPECT_EQ(readFile(folder.path("g")), bytes);
    TqFileOStreamBuf direct(name.c_str(), nullptr, TqIO::kAccessWrite, TqIO::kShareDenyNone, TqIO::kOpenAlways, 0);
    direct.writeBytes(bytes.data(), 20000);
    EXPECT_FALSE(direct.setBlockSize(4096)) << "written past the buffer";
}

TEST(FileStreamBuf, TakesOverAnOpenStream) {
    std::FILE* file = std::tmpfile();
    ASSERT_EQ(std::fwrite("0123456789", 1, 10, file), 10U);
    const BufPtr buf(createFileIOStreamBuf(file));
    EXPECT_EQ(buf->fileHandle(), file);
    EXPECT_TRUE(buf->length() == 10 && buf->tell() == 10) << "what was still in the stream included";
    buf->rewind();
    EXPECT_EQ(buf->readByte(), '0');
    buf->writeByte('b');
    EXPECT_EQ(buf->readByte(), '2') << "reading and writing may follow each other";
    for (const std::uintptr_t none : {std::uintptr_t{0}, ~std::uintptr_t{0}}) {
        const BufPtr empty(createFileIOStreamBuf(reinterpret_cast<void*>(none)));
        EXPECT_TRUE(thrownBy([&] { empty->writeByte(1); }) == kWriteError && empty->length() == 0);
    }
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
    const auto closing = [](const BufPtr& buf) { return thrownBy([&] { buf->close(); }); };
    const auto write = [&](const BufPtr& to, uint32_t n) { return thrownBy([&] { to->writeBytes(large.data(), n); }); };
    for (const Kind kind : {kPlain, kOutput}) {
        const BufPtr buf = openFull(kind);
        EXPECT_EQ(write(buf, 100000), kWriteError);
        EXPECT_EQ(closing(buf), L"") << "nothing was accepted";
        // Lost where the C stream is emptied, and, of the output buffer, before that.
        for (const uint32_t pendingBytes : {100U, kind == kPlain ? 200U : 10000U}) {
            const BufPtr pending = openFull(kind);
            EXPECT_TRUE(write(pending, pendingBytes) == L"" && closing(pending) == kWriteError);
            EXPECT_EQ(closing(pending), L"") << "once";
        }
        // Accepted bytes that an earlier call has lost: close() says so again, the destructor need not.
        const std::function<void(TqFileStreamBuf&)> losses[] = {
            [&](TqFileStreamBuf& b) { b.seek(0, TqIO::kSeekStart); },
            [&](TqFileStreamBuf& b) { b.writeBytes(large.data(), 100000); }, [&](TqFileStreamBuf& b) { b.readByte(); }};
        for (const auto& lose : losses)
            for (const bool closes : {true, false}) {
                const BufPtr lost = openFull(kind);
                EXPECT_TRUE(write(lost, 10).empty() && !thrownBy([&] { lose(*lost); }).empty());
                EXPECT_EQ(write(lost, 10), kWriteError);
                EXPECT_EQ(thrownBy([&] { lost->setBytes(0, large.data(), 1); }), kWriteError);
                EXPECT_EQ(closes ? closing(lost) : kWriteError, kWriteError);
            }
    }
    const TempFolder folder;
    writeFile(folder.path("f"), bytesOf("read only"));
    for (const bool closes : {true, false}) { // no accepted byte is lost
        const BufPtr readOnly = openForUpdate(kPlain, folder.wide(L"f"), TqIO::kOpenExisting, TqIO::kAccessRead);
        EXPECT_EQ(write(readOnly, 10), kWriteError);
        std::FILE* const directory = std::fopen("/", "r");
        EXPECT_TRUE(std::fgetc(directory) == EOF && std::ferror(directory) != 0);
        const BufPtr marked(createFileIOStreamBuf(directory));
        EXPECT_EQ(closes ? closing(readOnly) + closing(marked) : L"", L"");
    }
    EXPECT_EQ(closing(takeOverFull()), kWriteError) << "the caller's bytes";
}

TEST(FileStreamBufDeathTest, BytesLostUnsaidEndTheProcessInTheDestructor) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto lose = [](Kind kind, bool seeks) {
        BufPtr buf = openFull(kind);
        buf->writeByte('x');
        if (seeks && buf->seek(0xFFFFFFFF, TqIO::kSeekStart) == UINT64_MAX) // quietly
            buf.reset();
        if (!seeks)
            destoryFileIOStreamBuf(buf.release());
    };
    for (const Kind kind : {kPlain, kOutput})
        for (const bool seeks : {false, true})
            EXPECT_DEATH(lose(kind, seeks), "");
    EXPECT_DEATH(takeOverFull(), "");
}

std::wstring g_traces;

// What no call has thrown is traced, once; what one has is not.
TEST(FileStreamBuf, OwningPointersReportWhatIsLostInsteadOfEndingTheProcess) {
    TqTracer::setTraceFunctionW([](const wchar_t* text) { g_traces += text; });
    const auto owned = [](Kind kind) { return tq::StreamPointer(openFull(kind).release()); };
    for (const Kind kind : {kPlain, kOutput}) {
        owned(kind)->writeByte('x');
        EXPECT_EQ(std::exchange(g_traces, L""), L"/dev/full: Write file error!\n");
        const auto lost = owned(kind);
        lost->writeByte('x');
        EXPECT_EQ(thrownBy([&] { lost->seek(0, TqIO::kSeekStart); }).empty(), false);
    }
    owned(kPlain);
    EXPECT_EQ(g_traces, L"");
    tq::StreamPointer(takeOverFull().release()).reset();
    EXPECT_EQ(std::exchange(g_traces, L""), L"a file without a name: Write file error!\n");

    // The default hook reads formats; a name is none.
    TqTracer::setTraceFunctionW(TqTracer::defaultTraceW);
    const TempFolder folder;
    std::filesystem::create_symlink("/dev/full", folder.path("100%s%n"));
    testing::internal::CaptureStdout();
    tq::openOutput(folder.wide(L"100%s%n"), TqIO::kOpenExisting)->writeByte('x');
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), folder.path("100%s%n") + ": Write file error!\n");
}

TEST(FileStreamBuf, WhatCannotBeReadYetSpoilsNothingLater) {
    const TempFolder folder;
    for (const Kind kind : {kPlain, kOutput}) {
        writeFile(folder.path("f"), bytesOf("ab"));
        const BufPtr buf = openForUpdate(kind, folder.wide(L"f"), TqIO::kOpenExisting);
        Bytes got(4);
        buf->readBytes(got.data(), 4);
        std::ofstream(folder.path("f"), std::ios::app) << "cdef";
        EXPECT_FALSE(buf->isEOS()) << "what is appended after the end was read is read on";
        buf->readBytes(got.data() + 2, 2);
        EXPECT_EQ(got, bytesOf("abcd"));
        TqFlatMemBuf copy;
        copy.copyFrom(buf.get(), 0, 0);
        EXPECT_EQ(Bytes(copy.buffer(), copy.buffer() + copy.length()), bytesOf("ef"));

        const BufPtr writer = openForUpdate(kind, folder.wide(L"w"), TqIO::kCreateAlways, TqIO::kAccessWrite);
        writer->writeByte('a');
        EXPECT_EQ(writer->readByte(), 0) << "where reading is not allowed";
        writer->writeByte('b');
        writer->close();
        EXPECT_EQ(readFile(folder.path("w")), bytesOf("ab"));
    }
}

} // namespace
