#include "stream/StreamTest.h"

namespace {

using namespace streamtest;
using std::uint32_t;
using std::uint64_t;
using u8 = unsigned char;

// The least a class has to supply, over a fixed run of bytes; everything else is what the base makes of it.
class Fixed : public TqStreamBuf {
public:
    using TqStreamBuf::readBytes;
    using TqStreamBuf::writeBytes;
    explicit Fixed(Bytes bytes) : m_bytes(std::move(bytes)) {}
    uint64_t tell() const override { return m_position; }
    uint64_t length() const override { return m_bytes.size(); }
    void truncate() override {}
    uint64_t seek(uint64_t offset, TqIO::SeekType type) override {
        EXPECT_EQ(type, TqIO::kSeekStart);
        return m_position = offset;
    }
    void readBytes(u8* buf, uint32_t n) override {
        getBytes(m_position, buf, n);
        m_position += n;
    }
    void writeBytes(const u8* buf, uint32_t n) override {
        setBytes(m_position, buf, n);
        m_position += n;
    }
    void getBytes(u8* buf, uint32_t n) override { getBytes(m_position, buf, n); }
    void getBytes(uint64_t pos, u8* buf, uint32_t n) override { std::memcpy(buf, at(pos, n), n); }
    void setBytes(const u8* buf, uint32_t n) override { setBytes(m_position, buf, n); }
    void setBytes(uint64_t pos, const u8* buf, uint32_t n) override { std::memcpy(at(pos, n), buf, n); }

    Bytes m_bytes;
    uint64_t m_position = 0;
    bool m_isBroken = false;

private:
    u8* at(uint64_t pos, uint32_t n) {
        if (m_isBroken || pos + n > m_bytes.size())
            throw L"broken";
        return m_bytes.data() + pos;
    }
};

TEST(TqStreamBuf, DefaultsAreMadeOfThePrimitives) {
    Fixed fixed(bytesOf("0123456789"));
    TqStreamBuf& stream = fixed;
    EXPECT_FALSE(stream.buffer() || std::as_const(stream).buffer());
    stream.setlength(3);
    EXPECT_EQ(stream.length(), 10U);
    EXPECT_EQ(stream.readByte(), '0');
    EXPECT_EQ(stream.readByte(7), '7');
    EXPECT_EQ(stream.readByte(1), '1') << "at the position itself it is the sequential read";
    stream.writeByte('a');
    stream.writeByte(9, 'z');
    stream.setByte('b');
    stream.setByte(8, 'y');
    EXPECT_EQ(stream.getByte(), 'b');
    EXPECT_EQ(stream.getByte(9), 'z');
    EXPECT_EQ(fixed.m_bytes, bytesOf("01ab4567yz"));
    EXPECT_EQ(stream.tell(), 3U);
    EXPECT_FALSE(stream.isEOS());
    fixed.m_position = 10;
    EXPECT_TRUE(stream.isEOS());
    stream.rewind();
    fixed.m_isBroken = true;
    u8 buf[4] = {};
    expectRefusals(std::initializer_list<Refusal>{{kOutOfBuffer, [&] { stream.readBytes(8, buf, 3); }},
                                                  {kOutOfBuffer, [&] { stream.writeBytes(UINT64_MAX - 1, buf, 4); }},
                                                  {L"broken", [&] { stream.readBytes(4, buf, 3); }},
                                                  {L"broken", [&] { stream.writeBytes(4, buf, 3); }}});
    EXPECT_EQ(stream.tell(), 0U);
}

TEST(TqStreamBuf, CopyFromAddressesTheSourceAndCopyToTheDestination) {
    constexpr uint64_t kLength = 10000;
    const Bytes source = pattern(kLength);
    TqFlatMemBuf src;
    src.writeBytes(source.data(), kLength);
    const struct {
        uint64_t start, from, to, first, count;
        std::wstring thrown;
    } fromRows[] = {
        {100, 0, 0, 100, kLength - 100, L""}, {kLength, 0, 0, 0, 0, L""}, {100, 5, 5, 0, 0, L""},
        {100, 10, 9000, 10, 8990, L""},       {7, 4097, 0, 0, 4097, L""}, {7, 0, kLength + 1, 0, 8192, kOutOfBuffer}};
    for (const auto& row : fromRows) {
        src.moveTo(row.start);
        TqFlatMemBuf dst;
        dst.writeBytes(source.data(), 3);
        EXPECT_EQ(thrownBy([&] { dst.copyFrom(&src, row.from, row.to); }), row.thrown);
        EXPECT_EQ(src.tell(), row.start);
        dst.copyFrom(nullptr, 0, 5);
        ASSERT_EQ(dst.length(), 3 + row.count);
        EXPECT_EQ(std::memcmp(dst.buffer() + 3, source.data() + row.first, row.count), 0);
    }
    const struct {
        uint64_t start, dstStart, from, to, place, count; // cut to what there is
    } toRows[] = {{4000, 2000, 0, 0, 2000, 6000}, {kLength, 100, 0, 0, 100, 0},  {10, 0, 50, 50, 0, 0},
                  {4010, 0, 50, 5050, 50, 5000},  {4010, 0, 5050, 50, 50, 5000}, {9000, 9, 7900, 0, 0, 1000}};
    for (const auto& row : toRows) {
        src.moveTo(row.start);
        Fixed dst(Bytes(8000, 0xEE));
        dst.m_position = row.dstStart;
        src.copyTo(&dst, row.from, row.to);
        Bytes expected(8000, 0xEE);
        std::copy_n(&source[row.start % kLength], row.count, expected.begin() + static_cast<long>(row.place));
        EXPECT_EQ(dst.m_bytes, expected);
        EXPECT_EQ(dst.m_position, row.place + row.count);
        dst.m_isBroken = true;
        EXPECT_EQ(thrownBy([&] { src.copyTo(&dst, 1, 9); }), row.start == kLength ? L"" : L"broken");
        src.copyTo(nullptr, 0, 0);
        EXPECT_EQ(src.tell(), row.start);
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
    expectRefusals(std::initializer_list<Refusal>{{kOutOfBuffer, [&] { buf.readBytes(UINT64_MAX, &byte, 1); }},
                                                  {kOutOfBuffer, [&] { buf.getBytes(UINT64_MAX - 2, &byte, 8); }},
                                                  {kOutOfBuffer, [&] { buf.getBytes(&byte, kHuge); }},
                                                  {kOutOfBuffer, [&] { buf.setBytes(UINT64_MAX, &byte, 1); }},
                                                  {kOutOfBuffer, [&] { buf.writeByte(kHuge, 1); }},
                                                  {kOutOfBuffer, [&] { buf.writeBytes(&byte, kHuge); }},
                                                  {kOutOfBuffer, [&] { buf.writeBytes(UINT64_MAX, &byte, 1); }},
                                                  {kOutOfBuffer, [&] { buf.setlength(uint64_t{1} << 32); }},
                                                  {kOutOfBuffer, [&] { buf.open(&byte, kHuge, 1); }},
                                                  {kOutOfBuffer, [&] { buf.moveTo((uint64_t{1} << 32) + 1); }},
                                                  {kOutOfBuffer, [&] { buf.seek(UINT64_MAX - 6, TqIO::kSeekForward); }},
                                                  {L"std::exception", [&] { buf.setlength(0x80000000U); }},
                                                  {L"std::exception", [&] { buf.reserve(0x80000000U); }}});
    EXPECT_EQ(buf.tell(), 8U);
    EXPECT_EQ(Bytes(buf.buffer(), buf.buffer() + buf.length()), bytesOf("0123456789"));
    buf.open(buf.buffer() + 1, 4, 50000);
    EXPECT_EQ(std::memcmp(buf.buffer(), "1234", 4), 0) << "bytes of the buffer itself";
}

} // namespace
