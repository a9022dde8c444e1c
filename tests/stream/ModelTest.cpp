// Random operations on the buffers that write, and the same on a vector, with allocations that fail now and then.
// test_faults plays this too: there it is not operator new alone that fails.
#include "reference/ModelPlay.h"
#include "stream/StreamTest.h"

namespace {

using namespace streamtest;
using reference::Operation;
using StreamModel = reference::LeavesNothing;

// A byte that nothing has written yet is unknown.
using Memory = std::vector<std::optional<unsigned char>>;

void expectSame(const TqFlatMemBuf& buf, const Memory& bytes, uint64_t position) {
    ASSERT_EQ(buf.tell(), position);
    ASSERT_EQ(buf.length(), bytes.size());
    ASSERT_GE(buf.bufSize(), buf.length());
    ASSERT_EQ(buf.isEOS(), position >= bytes.size());
    const unsigned char* data = buf.buffer();
    for (std::size_t i = 0; i < bytes.size(); ++i)
        ASSERT_EQ(data[i], bytes[i].value_or(data[i])) << "at " << i;
}

TEST_F(StreamModel, TqFlatMemBuf) {
    TqFlatMemBuf b, shared;
    Memory m, sharedModel;
    uint64_t position = 0, sharedPosition = 0, pos = 0;
    uint32_t n = 0;
    int type = 0;
    unsigned char byte = 0;
    Bytes data, got;
    const auto put = [&](uint64_t at, const Bytes& bytes) { // what is out of range is refused
        if (at + bytes.size() <= m.size())
            std::copy(bytes.begin(), bytes.end(), m.begin() + static_cast<std::ptrdiff_t>(at));
    };
    const auto write = [&](uint64_t at, const Bytes& bytes, uint64_t length, uint64_t next) {
        m.resize(length);
        put(at, bytes);
        position = next;
    };
    const auto refused = [&](bool isRefused, const auto& call) {
        EXPECT_EQ(thrownBy(call), isRefused ? kOutOfBuffer : L"");
    };
    // `end`: up to where the bytes may be asked for.
    const auto read = [&](uint64_t at, uint32_t count, uint64_t end, const std::wstring& text, const auto& call) {
        got.assign(count, 0);
        EXPECT_EQ(thrownBy(call), at + count > end ? text : L"");
        for (uint32_t i = 0; at + count <= m.size() && i < count; ++i)
            ASSERT_EQ(got[i], m[at + i].value_or(got[i]));
    };
    const auto target = [&] { // of a seek
        const uint64_t targets[] = {pos, position + pos, position - pos, m.size() - pos};
        return type >= 0 && type <= 3 ? targets[type] : position;
    };
    const auto isOutside = [&] { return type >= 0 && type <= 3 && target() > m.size(); };
    const auto step = [&](uint32_t count) { position += position + count <= m.size() ? count : 0; };
    const auto writeByteAt = [&] { // leaves a byte at the length just past the data
        m.resize(m.empty() && pos == 0 ? 1 : std::max<uint64_t>(m.size(), pos));
        if (pos < m.size())
            m[pos] = byte;
        else
            EXPECT_EQ(b.buffer()[pos], byte);
        position = pos;
    };
    const auto seek = [&] {
        uint64_t result = target();
        refused(isOutside(), [&] { result = b.seek(pos, static_cast<TqIO::SeekType>(type)); });
        EXPECT_EQ(result, target());
    };
    const auto copied = [&] {
        if (sharedPosition >= sharedModel.size())
            return;
        m.resize(position);
        m.insert(m.end(), sharedModel.begin() + static_cast<std::ptrdiff_t>(sharedPosition), sharedModel.end());
        position = m.size();
    };
    const std::vector<Operation> operations = {
        {[&] { read(position, n, m.size(), kOutOfBuffer, [&] { b.readBytes(got.data(), n); }); }, [&] { step(n); }},
        {[&] { read(pos, n, m.size(), kOutOfBuffer, [&] { b.readBytes(pos, got.data(), n); }); }, [] {}},
        {[&] { read(position, 1, m.size(), kEndOfBuffer, [&] { got[0] = b.readByte(); }); }, [&] { step(1); }},
        {[&] { read(position, 1, m.size(), kOutOfBuffer, [&] { got[0] = b.getByte(); }); }, [&] { step(1); }},
        {[&] { read(pos, 1, m.size(), kOutOfBuffer, [&] { got[0] = b.getByte(pos); }); }, [] {}},
        {[&] { read(position, n, b.bufSize(), kOutOfBuffer, [&] { b.getBytes(got.data(), n); }); }, [] {}},
        {[&] { read(pos, n, b.bufSize(), kOutOfBuffer, [&] { b.getBytes(pos, got.data(), n); }); }, [] {}},
        {[&] { b.writeBytes(data.data(), n); }, [&] { write(position, data, position + n, position + n); }},
        {[&] { b.writeBytes(pos, data.data(), n); },
         [&] { write(pos, data, std::max<uint64_t>(m.size(), pos + n), pos); }},
        {[&] { b.writeBytes(b.buffer(), static_cast<uint32_t>(m.size())); }, // its own bytes, while it grows
         [&] {
             const Memory own = m;
             m.resize(position + own.size());
             std::copy(own.begin(), own.end(), m.begin() + static_cast<std::ptrdiff_t>(position));
             position = m.size();
         }},
        {[&] { b.writeByte(byte); }, [&] { write(position, {byte}, position + 1, position + 1); }},
        {[&] { b.writeByte(pos, byte); }, writeByteAt},
        {[&] { refused(position >= m.size(), [&] { b.setByte(byte); }); }, [&] { put(position, {byte}); }},
        {[&] { refused(pos >= m.size(), [&] { b.setByte(pos, byte); }); }, [&] { put(pos, {byte}); }},
        {[&] { refused(position + n > m.size(), [&] { b.setBytes(data.data(), n); }); }, [&] { put(position, data); }},
        {[&] { refused(pos + n > m.size(), [&] { b.setBytes(pos, data.data(), n); }); }, [&] { put(pos, data); }},
        {[&] { b.setlength(pos); }, [&] { m.resize(pos); }},
        {[&] { b.resize(static_cast<uint32_t>(pos)); }, [&] { m.resize(pos); }},
        {[&] { b.truncate(); }, [&] { m.resize(position); }},
        {[&] { b.reserve(static_cast<uint32_t>(pos)); }, [&] { EXPECT_GE(b.bufSize(), pos); }},
        {seek, [&] { position = isOutside() ? position : target(); }},
        {[&] { b.rewind(); }, [&] { position = 0; }},
        {[&] { b.copyFrom(&shared, 0, 0); }, copied},
        {[&] { shared = b; }, [&] { std::tie(sharedModel, sharedPosition) = std::tie(m, position); }},
        {[&] { b.open(data.data(), n, static_cast<uint32_t>(pos)); }, [&] { m.clear(), write(0, data, n + pos, pos); }},
    };
    const auto choose = [&](std::mt19937& random) {
        if (m.size() > 1000) {
            b.setlength(50);
            m.resize(50);
        }
        pos = random() % 4 == 0 ? m.size() : random() % 120;
        n = static_cast<uint32_t>(random() % 40);
        type = static_cast<int>(random() % 6) - 1;
        byte = static_cast<unsigned char>(random());
        data.resize(n);
        std::generate(data.begin(), data.end(), [&] { return static_cast<unsigned char>(random()); });
        // Opening something else is rare, so that there is something to open it over.
        return operations.size() - (random() % 8 == 0 ? 0 : 1);
    };
    reference::play(1, operations, choose, [&] {
        expectSame(b, m, position);
        expectSame(shared, sharedModel, sharedPosition);
    });
}

void playFile(Kind kind) {
    const TempFolder folder;
    BufPtr b = openForUpdate(kind, folder.wide(L"run"));
    Bytes m;
    uint64_t position = 0, pos = 0;
    uint32_t n = 0;
    int type = 0;
    Bytes data;
    // What length() answers: the output buffer counts a move past the end.
    const auto known = [&] { return kind == kOutput ? std::max<uint64_t>(m.size(), position) : m.size(); };
    const auto available = [&](uint64_t at) { return at >= m.size() ? 0 : std::min<uint64_t>(n, m.size() - at); };
    const auto store = [&](uint64_t at, uint64_t next) {
        m.resize(data.empty() ? m.size() : std::max<uint64_t>(m.size(), at + n));
        std::copy(data.begin(), data.end(), m.begin() + static_cast<std::ptrdiff_t>(data.empty() ? 0 : at));
        position = next;
    };
    // A short read is not reported, and leaves the rest of the caller's memory alone.
    const auto read = [&](uint64_t at, const auto& call) {
        Bytes got(n + 1, 0xC5);
        Bytes expected = got;
        std::copy_n(m.begin() + static_cast<std::ptrdiff_t>(available(at) == 0 ? 0 : at), available(at),
                    expected.begin());
        call(got.data());
        ASSERT_EQ(got, expected);
    };
    const auto isPast = [&] { return pos + n > known(); };
    const auto isUnset = [&](uint64_t at) { return kind == kOutput && at > m.size(); };
    const auto refused = [&](bool isRefused, const auto& call) {
        EXPECT_EQ(thrownBy(call), isRefused ? kOutOfBuffer : L"");
    };
    const auto readAt = [&] {
        if (isPast())
            refused(true, [&] { b->readBytes(pos, data.data(), n); });
        else
            read(pos, [&](unsigned char* got) { b->readBytes(pos, got, n); });
    };
    const auto seek = [&] {
        const uint64_t offsets[] = {pos, pos - position, position - pos, pos - m.size(), pos};
        EXPECT_EQ(b->seek(offsets[type], static_cast<TqIO::SeekType>(type)), 0U); // 4 means nothing else than 0
    };
    const auto sought = [&] {
        position = pos;
        EXPECT_EQ(thrownBy([&] { b->seek(pos + 1, TqIO::kSeekBackward); }), kInternalError);
    };
    const auto next = [&] { return position == pos ? pos + n : position; };
    const auto writtenAt = [&] {
        if (!isPast())
            store(pos, next());
    };
    const auto set = [&](uint64_t at, uint64_t after) {
        if (!isUnset(at))
            store(at, after);
    };
    const std::vector<Operation> operations = {
        {[&] { b->writeBytes(data.data(), n); }, [&] { store(position, position + n); }},
        {[&] { read(position, [&](unsigned char* got) { b->readBytes(got, n); }); },
         [&] { position += available(position); }},
        {readAt, [&] { position = isPast() ? position : next(); }},
        {[&] { refused(isPast(), [&] { b->writeBytes(pos, data.data(), n); }); }, writtenAt},
        {[&] { read(position, [&](unsigned char* got) { b->getBytes(got, n); }); }, [] {}},
        {[&] { read(pos, [&](unsigned char* got) { b->getBytes(pos, got, n); }); },
         [&] { position = pos + available(pos); }},
        {[&] { refused(isUnset(position), [&] { b->setBytes(data.data(), n); }); }, [&] { set(position, position); }},
        {[&] { refused(isUnset(pos), [&] { b->setBytes(pos, data.data(), n); }); },
         [&] { set(pos, kind == kPlain ? pos + n : position); }},
        {seek, sought},
        {[&] { b->truncate(); }, [&] { position = m.size(); }}};
    const auto choose = [&](std::mt19937& random) {
        if (m.size() > 150000 || random() % 1000 == 0) {
            b->close();
            EXPECT_EQ(readFile(folder.path("run")), m);
            b = openForUpdate(kind, folder.wide(L"run"));
            m.clear();
            position = 0;
        }
        // Around the write-behind threshold or nothing now and then, small otherwise.
        const auto size = random() % 16;
        n = static_cast<uint32_t>(size == 0 ? 16380 + random() % 10 : size == 1 ? 0 : random() % 3000);
        // Now and then the end, or where n bytes reach just past the position.
        const auto place = random() % 8;
        pos = place == 0 && n <= position ? position + 1 - n : place < 3 ? m.size() : random() % (m.size() + 20);
        type = static_cast<int>(random() % 5);
        data.resize(n);
        std::generate(data.begin(), data.end(),
                      [at = random()]() mutable { return static_cast<unsigned char>((at += 37) >> 3); });
        return operations.size();
    };
    reference::play(2, operations, choose, [&] {
        ASSERT_EQ(b->tell(), position);
        ASSERT_EQ(b->length(), known());
    });
}

TEST_F(StreamModel, FileBuffers) {
    playFile(kPlain);
    playFile(kOutput);
}

} // namespace
