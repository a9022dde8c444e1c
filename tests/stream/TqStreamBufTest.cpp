#include "stream/StreamTest.h"

namespace {

using namespace streamtest;
using u8 = unsigned char;

// A run of bytes that keeps its length. What the base class makes of the operations is called by the base's name.
class Fixed : public TqFlatMemBuf {
public:
    explicit Fixed(const Bytes& bytes) {
        TqFlatMemBuf::writeBytes(bytes.data(), static_cast<uint32_t>(bytes.size()));
        rewind();
    }
    void readBytes(u8* buf, uint32_t n) override { m_isBroken ? throw L"broken" : TqFlatMemBuf::readBytes(buf, n); }
    void writeBytes(const u8* buf, uint32_t n) override {
        m_isBroken ? throw L"broken" : setBytes(buf, n);
        moveTo(tell() + n);
    }
    void readBytes(uint64_t pos, u8* buf, uint32_t n) override { TqStreamBuf::readBytes(pos, buf, n); }
    void writeBytes(uint64_t pos, const u8* buf, uint32_t n) override { TqStreamBuf::writeBytes(pos, buf, n); }
    Bytes bytes() const { return Bytes(buffer(), buffer() + length()); }

    bool m_isBroken = false;
};

TEST(TqStreamBuf, DefaultsAreMadeOfThePrimitives) {
    using Base = TqStreamBuf;
    Fixed s(bytesOf("0123456789"));
    EXPECT_FALSE(s.Base::buffer() || std::as_const(s).Base::buffer());
    s.Base::setlength(3);
    EXPECT_TRUE(s.length() == 10U && s.Base::readByte() == '0' && s.Base::readByte(7) == '7');
    EXPECT_EQ(s.Base::readByte(1), '1') << "at the position itself it is the sequential read";
    s.Base::writeByte('a');
    s.Base::writeByte(9, 'z');
    s.Base::setByte('b');
    s.Base::setByte(8, 'y');
    EXPECT_TRUE(s.Base::getByte() == 'b' && s.Base::getByte(9) == 'z' && s.bytes() == bytesOf("01ab4567yz"));
    EXPECT_TRUE(s.tell() == 3 && !s.Base::isEOS());
    s.moveTo(10);
    EXPECT_TRUE(s.Base::isEOS());
    s.Base::rewind();
    s.m_isBroken = true;
    u8 buf[4] = {};
    expectRefused(kOutOfBuffer,
                  {[&] { s.Base::readBytes(8, buf, 3); }, [&] { s.Base::writeBytes(UINT64_MAX - 1, buf, 4); }});
    expectRefused(L"broken", {[&] { s.Base::readBytes(4, buf, 3); }, [&] { s.Base::writeBytes(4, buf, 3); }});
    EXPECT_EQ(s.tell(), 0U);
}

TEST(TqStreamBuf, CopyFromAddressesTheSourceAndCopyToTheDestination) {
    constexpr uint64_t kLength = 10000;
    const Bytes source = pattern(kLength);
    TqFlatMemBuf src;
    src.writeBytes(source.data(), kLength);
    using Row = std::tuple<uint64_t, uint64_t, uint64_t, std::size_t, std::size_t, std::wstring>;
    const Row fromRows[] = {
        {100, 0, 0, 100, kLength - 100, L""}, {kLength, 0, 0, 0, 0, L""}, {100, 5, 5, 0, 0, L""},
        {100, 10, 9000, 10, 8990, L""},       {7, 4097, 0, 0, 4097, L""}, {7, 0, kLength + 1, 0, 8192, kOutOfBuffer}};
    for (const auto& [start, from, to, first, count, thrown] : fromRows) {
        src.moveTo(start);
        TqFlatMemBuf dst;
        dst.writeBytes(source.data(), 3);
        EXPECT_TRUE(thrownBy([&, at = from, end = to] { dst.copyFrom(&src, at, end); }) == thrown &&
                    src.tell() == start);
        dst.copyFrom(nullptr, 0, 5);
        ASSERT_EQ(dst.length(), 3 + count);
        EXPECT_EQ(std::memcmp(dst.buffer() + 3, source.data() + first, count), 0);
    }
    // Where both start, the range, and what is written: its place and its count, cut to what there is.
    const std::array<uint64_t, 6> toRows[] = {{4000, 2000, 0, 0, 2000, 6000}, {kLength, 100, 0, 0, 100, 0},
                                              {10, 0, 50, 50, 0, 0},          {4010, 0, 50, 5050, 50, 5000},
                                              {4010, 0, 5050, 50, 50, 5000},  {9000, 9, 7900, 0, 0, 1000}};
    for (const auto& [start, dstStart, from, to, place, count] : toRows) {
        src.moveTo(start);
        Fixed dst(Bytes(8000, 0xEE));
        dst.moveTo(dstStart);
        src.copyTo(&dst, from, to);
        Bytes expected(8000, 0xEE);
        std::copy_n(&source[start % kLength], count, expected.begin() + static_cast<long>(place));
        EXPECT_TRUE(dst.bytes() == expected && dst.tell() == place + count);
        dst.m_isBroken = true;
        EXPECT_EQ(thrownBy([&] { src.copyTo(&dst, 1, 9); }), start == kLength ? L"" : L"broken");
        src.copyTo(nullptr, 0, 0);
        EXPECT_EQ(src.tell(), start);
    }
}

TEST(TqFlatMemBuf, SumsBeyondTheRangeAreRefusedAndChangeNothing) {
    constexpr uint32_t kHuge = 0xFFFFFFFFU;
    TqFlatMemBuf buf;
    EXPECT_EQ(buf.buffer(), nullptr);
    buf.readBytes(nullptr, 0);
    buf.writeBytes(nullptr, 0);
    buf.writeBytes(bytesOf("0123456789").data(), 10);
    buf.moveTo(8);
    u8 byte = 7;
    expectRefused(kOutOfBuffer,
                  {[&] { buf.readBytes(UINT64_MAX, &byte, 1); }, [&] { buf.getBytes(UINT64_MAX - 2, &byte, 8); },
                   [&] { buf.getBytes(&byte, kHuge); }, [&] { buf.setBytes(UINT64_MAX, &byte, 1); },
                   [&] { buf.writeByte(kHuge, 1); }, [&] { buf.writeBytes(&byte, kHuge); },
                   [&] { buf.writeBytes(UINT64_MAX, &byte, 1); }, [&] { buf.setlength(uint64_t{1} << 32); },
                   [&] { buf.open(&byte, kHuge, 1); }, [&] { buf.moveTo((uint64_t{1} << 32) + 1); },
                   [&] { buf.seek(UINT64_MAX - 6, TqIO::kSeekForward); }});
    expectRefused(L"std::exception", {[&] { buf.setlength(0x80000000U); }, [&] { buf.reserve(0x80000000U); }});
    EXPECT_TRUE(buf.tell() == 8U && Bytes(buf.buffer(), buf.buffer() + buf.length()) == bytesOf("0123456789"));
    buf.open(buf.buffer() + 1, 4, 50000);
    EXPECT_EQ(std::memcmp(buf.buffer(), "1234", 4), 0) << "bytes of the buffer itself";
}

} // namespace
