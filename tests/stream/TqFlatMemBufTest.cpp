#include "stream/StreamTest.h"

#include <TqOsBase/stream/TqFlatMemBuf.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>
#include <random>

namespace {

using namespace streamtest;
using std::uint32_t;
using std::uint64_t;

TEST(TqFlatMemBuf, EmptyBufferTakesNothingAndCopiesWhatItOpens) {
    TqFlatMemBuf buf;
    EXPECT_EQ(buf.buffer(), nullptr);
    buf.readBytes(nullptr, 0);
    buf.writeBytes(nullptr, 0);
    EXPECT_EQ(buf.length(), 0U);
    unsigned char data[] = {1, 2, 3, 4};
    buf.open(data, 4, 2);
    EXPECT_EQ(std::memcmp(buf.buffer(), data, 4), 0);
    EXPECT_NE(buf.buffer(), data);
}

TEST(TqFlatMemBuf, ByteWrittenAtTheLengthLiesJustPastTheData) {
    for (const uint32_t length : {1U, 15U, 16U, 17U, 4096U}) {
        TqFlatMemBuf buf;
        buf.setlength(length);
        buf.writeByte(length, 0xAB);
        EXPECT_GT(buf.bufSize(), length);
        buf.setlength(length + 1);
        EXPECT_EQ(buf.getByte(length), 0xAB);
    }
}

TEST(TqFlatMemBuf, SumsBeyondTheRangeAreRefusedAndChangeNothing) {
    constexpr uint32_t kHuge = 0xFFFFFFFFU;
    TqFlatMemBuf buf;
    const Bytes text = bytesOf("0123456789");
    buf.writeBytes(text.data(), 10);
    buf.moveTo(8);
    unsigned char byte = 7;
    const std::function<void()> refused[] = {
        [&] { buf.readBytes(UINT64_MAX, &byte, 1); },
        [&] { buf.getBytes(UINT64_MAX - 2, &byte, 8); },
        [&] { buf.getBytes(&byte, kHuge); },
        [&] { buf.setBytes(UINT64_MAX, &byte, 1); },
        [&] { buf.setByte(uint64_t{1} << 32, 1); },
        [&] { buf.writeByte(uint64_t{1} << 32, 1); },
        [&] { buf.writeByte(kHuge, 1); },
        [&] { buf.writeBytes(&byte, kHuge); },
        [&] { buf.writeByte(UINT64_MAX, 1); },
        [&] { buf.writeBytes(kHuge, &byte, 1); },
        [&] { buf.writeBytes(UINT64_MAX, &byte, 1); },
        [&] { buf.setlength(uint64_t{1} << 32); },
        [&] { buf.open(&byte, kHuge, 1); },
        [&] { buf.moveTo((uint64_t{1} << 32) + 1); },
        [&] { buf.seek(UINT64_MAX - 6, TqIO::kSeekForward); },
    };
    for (const auto& call : refused)
        EXPECT_EQ(thrownBy(call), kOutOfBuffer) << "call " << &call - refused;
    EXPECT_EQ(thrownBy([&] { buf.setlength(0x80000000U); }), L"std::exception");
    EXPECT_EQ(thrownBy([&] { buf.reserve(0x80000000U); }), L"std::exception");
    EXPECT_EQ(buf.tell(), 8U);
    EXPECT_EQ(buf.length(), 10U);
    EXPECT_EQ(std::memcmp(buf.buffer(), text.data(), 10), 0);
    EXPECT_EQ(byte, 7);
}

TEST(TqFlatMemBuf, BytesOfTheBufferItselfMayBeWrittenWhileItGrows) {
    TqFlatMemBuf buf;
    const Bytes text = bytesOf("01234567");
    buf.writeBytes(text.data(), 8);
    while (buf.length() < 16384)
        buf.writeBytes(buf.buffer(), static_cast<uint32_t>(buf.length()));
    buf.writeBytes(16376, buf.buffer(), 16384);
    ASSERT_EQ(buf.length(), 32760U);
    for (uint32_t i = 0; i < 32760; ++i)
        ASSERT_EQ(buf.getByte(i), text[i % 8]);
    buf.open(buf.buffer() + 1, 4, 50000);
    EXPECT_EQ(std::memcmp(buf.buffer(), "1234", 4), 0);
}

} // namespace
