#include "stream/StreamTest.h"

#include <TqOsBase/stream/TqFlatMemBuf.h>

#include <cstring>
#include <type_traits>

static_assert(std::is_same_v<std::underlying_type_t<TqIO::AccessMode>, unsigned int>);
static_assert(sizeof(TqIO::SeekType) == 4 && sizeof(TqIO::ShareMode) == 4 && sizeof(TqIO::CreationDisposition) == 4);

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
    void getBytes(uint64_t pos, u8* buf, uint32_t n) override {
        if (m_isBroken)
            throw L"broken";
        for (uint32_t i = 0; i < n; ++i)
            buf[i] = m_bytes.at(pos + i);
    }
    void setBytes(const u8* buf, uint32_t n) override { setBytes(m_position, buf, n); }
    void setBytes(uint64_t pos, const u8* buf, uint32_t n) override {
        if (m_isBroken)
            throw L"broken";
        for (uint32_t i = 0; i < n; ++i)
            m_bytes.at(pos + i) = buf[i];
    }

    Bytes m_bytes;
    uint64_t m_position = 0;
    bool m_isBroken = false;
};

TEST(TqStreamBuf, DefaultsAreMadeOfThePrimitives) {
    Fixed fixed(bytesOf("0123456789"));
    TqStreamBuf& stream = fixed;
    EXPECT_EQ(stream.buffer(), nullptr);
    EXPECT_EQ(static_cast<const TqStreamBuf&>(stream).buffer(), nullptr);
    stream.setlength(3);
    EXPECT_EQ(stream.length(), 10U);
    EXPECT_EQ(stream.readByte(), '0');
    EXPECT_EQ(stream.readByte(7), '7');
    EXPECT_EQ(stream.readByte(1), '1') << "at the position itself it is the sequential read";
    EXPECT_EQ(stream.tell(), 2U);
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

    u8 buf[4] = {};
    const Refusal refusals[] = {
        {kOutOfBuffer, [&] { stream.readBytes(8, buf, 3); }},
        {kOutOfBuffer, [&] { stream.writeBytes(8, buf, 3); }},
        {kOutOfBuffer, [&] { stream.readBytes(UINT64_MAX, buf, 1); }},
        {kOutOfBuffer, [&] { stream.writeBytes(UINT64_MAX - 1, buf, 4); }},
    };
    expectRefusals(refusals);
    fixed.m_isBroken = true;
    EXPECT_EQ(thrownBy([&] { stream.readBytes(4, buf, 3); }), L"broken");
    EXPECT_EQ(thrownBy([&] { stream.writeBytes(4, buf, 3); }), L"broken");
    EXPECT_EQ(stream.tell(), 0U);
}

Bytes patterned(std::size_t n) {
    Bytes bytes(n);
    for (std::size_t i = 0; i < n; ++i)
        bytes[i] = static_cast<u8>(i * 31 + i / 4096);
    return bytes;
}

TEST(TqStreamBuf, CopyFromAddressesTheSource) {
    constexpr uint64_t kLength = 10000;
    const Bytes source = patterned(kLength);
    struct Row {
        uint64_t start, from, to, first, count;
        std::wstring thrown;
    };
    const Row rows[] = {
        {100, 0, 0, 100, kLength - 100, L""},
        {kLength, 0, 0, 0, 0, L""},
        {100, 5, 5, 0, 0, L""},
        {100, 10, 9000, 10, 8990, L""},
        {7, 4097, 0, 0, 4097, L""},
        {7, 0, kLength + 1, 0, 8192, kOutOfBuffer},
        {7, kLength + 1, kLength + 2, 0, 0, kOutOfBuffer},
    };
    for (const Row& row : rows) {
        TqFlatMemBuf src;
        src.writeBytes(source.data(), kLength);
        src.moveTo(row.start);
        TqFlatMemBuf dst;
        dst.writeBytes(source.data(), 3);
        EXPECT_EQ(thrownBy([&] { dst.copyFrom(&src, row.from, row.to); }), row.thrown);
        EXPECT_EQ(src.tell(), row.start);
        ASSERT_EQ(dst.length(), 3 + row.count);
        EXPECT_EQ(dst.tell(), 3 + row.count);
        EXPECT_EQ(std::memcmp(dst.buffer() + 3, source.data() + row.first, row.count), 0);
    }
    TqFlatMemBuf dst;
    dst.copyFrom(nullptr, 0, 5);
    EXPECT_EQ(dst.length(), 0U);
}

TEST(TqStreamBuf, CopyToAddressesTheDestinationAndIsCutToWhatThereIs) {
    const Bytes source = patterned(6000);
    struct Row {
        uint64_t start, dstStart, from, to, place, count;
    };
    const Row rows[] = {
        {0, 2000, 0, 0, 2000, 6000}, {6000, 100, 0, 0, 100, 0},   {10, 0, 50, 50, 0, 0},
        {10, 0, 50, 5050, 50, 5000}, {10, 0, 5050, 50, 50, 5000}, {5000, 9, 7900, 0, 0, 1000},
    };
    for (const Row& row : rows) {
        TqFlatMemBuf src;
        src.writeBytes(source.data(), 6000);
        src.moveTo(row.start);
        Fixed dst(Bytes(8000, 0xEE));
        dst.m_position = row.dstStart;
        src.copyTo(&dst, row.from, row.to);
        Bytes expected(8000, 0xEE);
        std::copy_n(source.begin() + static_cast<long>(row.start), row.count,
                    expected.begin() + static_cast<long>(row.place));
        EXPECT_EQ(dst.m_bytes, expected);
        EXPECT_EQ(dst.m_position, row.place + row.count);
        EXPECT_EQ(src.tell(), row.start);
        dst.m_isBroken = true;
        if (row.count > 0) {
            EXPECT_EQ(thrownBy([&] { src.copyTo(&dst, 1, 9); }), L"broken");
        }
        EXPECT_EQ(src.tell(), row.start);
        src.copyTo(nullptr, 0, 0);
    }
}

} // namespace
