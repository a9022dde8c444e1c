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

// The bytes with their position, by the plainest means. A byte that nothing has written yet is unknown; `past` is the
// one that writeByte(pos, b) leaves behind the data.
struct Model {
    std::vector<std::optional<unsigned char>> bytes;
    uint64_t position = 0;

    uint64_t length() const { return bytes.size(); }
    void resize(uint64_t n) { bytes.resize(n); }
    void put(uint64_t pos, const Bytes& data) {
        for (std::size_t i = 0; i < data.size(); ++i)
            bytes[pos + i] = data[i];
    }
};

void expectSame(const TqFlatMemBuf& buf, const Model& model) {
    ASSERT_EQ(buf.tell(), model.position);
    ASSERT_EQ(buf.length(), model.length());
    ASSERT_GE(buf.bufSize(), buf.length());
    ASSERT_EQ(buf.isEOS(), model.position >= model.length());
    const unsigned char* data = buf.buffer();
    for (std::size_t i = 0; i < model.bytes.size(); ++i)
        ASSERT_EQ(data[i], model.bytes[i].value_or(data[i])) << "at " << i;
}

class RandomRun {
public:
    explicit RandomRun(unsigned seed) : m_random(seed) {}

    void step() {
        const uint64_t pos = number();
        const auto n = static_cast<uint32_t>(m_random() % 40);
        const auto byte = static_cast<unsigned char>(m_random());
        Bytes data(n);
        std::generate(data.begin(), data.end(), [&] { return static_cast<unsigned char>(m_random()); });
        const bool isPositioned = m_random() % 2 == 0;
        const uint64_t length = m_model.length();
        const uint64_t position = m_model.position;
        const uint64_t place = isPositioned ? pos : position;
        switch (m_random() % 20) {
        case 0:
        case 1:
            expect(place + n > length ? kOutOfBuffer : L"",
                   [&] { isPositioned ? m_buf.readBytes(pos, read(n), n) : m_buf.readBytes(read(n), n); });
            check(place, n, place + n <= length);
            if (!isPositioned && position + n <= length)
                m_model.position += n;
            break;
        case 2:
            m_buf.writeBytes(data.data(), n);
            m_model.resize(position + n);
            m_model.put(position, data);
            m_model.position += n;
            break;
        case 3:
            m_buf.writeBytes(pos, data.data(), n);
            m_model.resize(std::max<uint64_t>(length, pos + n));
            m_model.put(pos, data);
            m_model.position = pos;
            break;
        case 4:
            expect(position >= length ? kEndOfBuffer : L"", [&] { *read(1) = m_buf.readByte(); });
            check(position, 1, position < length);
            m_model.position += position < length ? 1 : 0;
            break;
        case 5:
            m_buf.writeByte(byte);
            m_model.resize(position + 1);
            m_model.put(position, {byte});
            ++m_model.position;
            break;
        case 6:
            m_buf.writeByte(pos, byte);
            m_model.resize(length == 0 && pos == 0 ? 1 : std::max(length, pos));
            if (pos < m_model.length())
                m_model.put(pos, {byte});
            else
                EXPECT_EQ(m_buf.buffer()[pos], byte) << "just past the data";
            m_model.position = pos;
            break;
        case 7:
        case 8:
            expect(place >= length ? kOutOfBuffer : L"",
                   [&] { *read(1) = isPositioned ? m_buf.getByte(pos) : m_buf.getByte(); });
            check(place, 1, place < length);
            m_model.position += !isPositioned && position < length ? 1 : 0;
            break;
        case 9:
        case 10:
            expect(place >= length ? kOutOfBuffer : L"",
                   [&] { isPositioned ? m_buf.setByte(pos, byte) : m_buf.setByte(byte); });
            if (place < length)
                m_model.put(place, {byte});
            break;
        case 11:
        case 12:
            expect(place + n > m_buf.bufSize() ? kOutOfBuffer : L"",
                   [&] { isPositioned ? m_buf.getBytes(pos, read(n), n) : m_buf.getBytes(read(n), n); });
            check(place, n, place + n <= length);
            break;
        case 13:
            expect(place + n > length ? kOutOfBuffer : L"",
                   [&] { isPositioned ? m_buf.setBytes(pos, data.data(), n) : m_buf.setBytes(data.data(), n); });
            if (place + n <= length)
                m_model.put(place, data);
            break;
        case 14:
            isPositioned ? m_buf.setlength(pos) : m_buf.resize(static_cast<uint32_t>(pos));
            m_model.resize(pos);
            break;
        case 15:
            m_buf.truncate();
            m_model.resize(position);
            break;
        case 16:
            m_buf.reserve(static_cast<uint32_t>(pos));
            EXPECT_GE(m_buf.bufSize(), pos);
            break;
        case 17:
            seek(pos, static_cast<TqIO::SeekType>(static_cast<int>(m_random() % 6) - 1));
            break;
        case 18:
            m_shared = m_buf; // what is written from now on must not reach the copy
            m_sharedModel = m_model;
            break;
        default:
            if (m_random() % 8 == 0) {
                m_buf.open(data.data(), n, static_cast<uint32_t>(pos));
                m_model = {};
                m_model.resize(n + pos);
                m_model.put(0, data);
                m_model.position = pos;
            } else {
                m_buf.rewind();
                m_model.position = 0;
            }
        }
        expectSame(m_buf, m_model);
        expectSame(m_shared, m_sharedModel);
    }

private:
    uint64_t number() { return m_random() % 4 == 0 ? m_model.length() : m_random() % 120; }

    unsigned char* read(uint32_t n) {
        m_read.assign(n, 0);
        return m_read.data();
    }
    void check(uint64_t pos, uint32_t n, bool didRead) {
        for (uint32_t i = 0; didRead && i < n; ++i)
            ASSERT_EQ(m_read[i], m_model.bytes[pos + i].value_or(m_read[i]));
    }
    template <class Call>
    void expect(const std::wstring& text, const Call& call) {
        EXPECT_EQ(thrownBy(call), text);
    }

    void seek(uint64_t offset, TqIO::SeekType type) {
        const auto length = static_cast<long long>(m_model.length());
        const auto position = static_cast<long long>(m_model.position);
        const auto distance = static_cast<long long>(offset);
        const long long targets[] = {distance, position + distance, position - distance, length - distance};
        const bool isNamed = type >= TqIO::kSeekStart && type <= TqIO::kSeekEnd;
        const long long target = isNamed ? targets[type] : position;
        const bool isRefused = isNamed && (target < 0 || target > length);
        uint64_t result = 0;
        expect(isRefused ? kOutOfBuffer : L"", [&] { result = m_buf.seek(offset, type); });
        if (!isRefused) {
            m_model.position = static_cast<uint64_t>(target);
            EXPECT_EQ(result, m_model.position);
        }
    }

    std::mt19937 m_random;
    TqFlatMemBuf m_buf;
    Model m_model;
    TqFlatMemBuf m_shared;
    Model m_sharedModel;
    Bytes m_read;
};

TEST(TqFlatMemBuf, AgreesWithAVectorUnderRandomOperations) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        RandomRun run(seed);
        for (int i = 0; i < 1000 && !testing::Test::HasFailure(); ++i)
            run.step();
        ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
    }
}

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
