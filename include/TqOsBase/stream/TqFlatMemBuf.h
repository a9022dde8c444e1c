#pragma once

/// \file
/// A stream over bytes in memory.

#include <TqOsBase/containers/TqVector.h>
#include <TqOsBase/stream/TqMemStreamBuf.h>

#include <cassert>
#include <cstdint>

/// A growable byte array with a stream position. A copy shares the bytes until one of the two is written to.
///
/// Failures are a TqException, "Out of stream buffer!" unless another text is named: a range beyond the data, or a sum
/// beyond 32 bits. Lengths are those of TqByteVector: from 2 GiB on std::length_error, and std::bad_alloc when memory
/// runs out. Position and length are unchanged then. Bytes that a growing length gains are not initialised: they are
/// whatever the storage held. Sources and destinations may lie in the buffer itself.
class TQ_API TQ_SHOWN TqFlatMemBuf : public TqMemStreamBuf {
public:
    TqFlatMemBuf() = default;
    /// Shares the bytes; the position is the copy's own.
    TqFlatMemBuf(const TqFlatMemBuf&) = default;
    TqFlatMemBuf& operator=(const TqFlatMemBuf&) = default;
    ~TqFlatMemBuf() override;

    /// The position, which may lie beyond the data.
    std::uint64_t tell() const override { return m_position; }
    /// Bytes of data.
    std::uint64_t length() const override { return static_cast<std::uint64_t>(m_bytes.logicalLength()); }
    /// resize(); throws beyond 32 bits.
    void setlength(std::uint64_t length) override;
    /// The data ends at the position: cut there, or extended to it.
    void truncate() override;
    void rewind() override;
    /// The first byte, writable; null without storage. Shared bytes are copied first. Valid until the buffer grows.
    unsigned char* buffer() override;
    /// The first byte, shared or not; null without storage.
    const unsigned char* buffer() const override;

    using TqMemStreamBuf::readByte;
    /// Throws "End of stream buffer!" at the end.
    unsigned char readByte() override;
    /// Everything after the written byte is dropped.
    void writeByte(unsigned char byte) override;
    /// Deliberately odd: a byte written at pos = length (other than 0) lies in the storage just past the data and does
    /// not lengthen it; with pos > length the data ends at pos, before the byte; on an empty buffer pos 0 gives
    /// length 1. The position becomes `pos`, not the place after the byte.
    void writeByte(std::uint64_t pos, unsigned char byte) override;
    /// Deliberately advances by one, unlike the other gets.
    unsigned char getByte() override;
    /// As the positioned get of runs.
    unsigned char getByte(std::uint64_t pos) override;
    /// As the sets of runs.
    void setByte(unsigned char byte) override;
    void setByte(std::uint64_t pos, unsigned char byte) override;

    /// Throws when fewer than `n` bytes are left.
    void readBytes(unsigned char* buf, std::uint32_t n) override;
    /// The position always stays.
    void readBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) override;
    /// The data ends after the written bytes: extended, or cut (with n = 0 at the position).
    void writeBytes(const unsigned char* buf, std::uint32_t n) override;
    /// Extends the data when needed, never cuts it. The position becomes `pos`, not the place after the bytes.
    void writeBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) override;
    /// As the read, with the position left alone.
    void getBytes(unsigned char* buf, std::uint32_t n) override;
    /// Deliberately bounded by bufSize(), not by length(): storage past the data can be read.
    void getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) override;
    /// The positioned set at the position, which stays.
    void setBytes(const unsigned char* buf, std::uint32_t n) override;
    /// Never extends the data.
    void setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) override;

    std::uint64_t bufSize() const override;
    /// Sets the length; the position stays, even beyond the data.
    void resize(std::uint32_t length) override;
    /// At least `size` bytes of storage; data and position stay.
    void reserve(std::uint32_t size) override;
    /// Throws when pos > length(); exactly the end is allowed.
    std::uint64_t moveTo(std::uint64_t pos) override;
    /// close(), then a length of size + pos, with the `size` bytes at `data` copied to the start and the position at
    /// `pos`. The caller's memory is not kept. Where memory runs out the buffer stays closed; a length
    /// that is refused changes nothing.
    void open(void* data, std::uint32_t size, std::uint32_t pos) override;
    /// Position 0 and length 0; the storage stays (a buffer without any gets 16 bytes).
    void close() override;

private:
    friend class TqFileOStreamBuf; // for advanceUnshared() and the position

    // Moves on by `n`, at least 1, and returns the place that the position had, to be written to: for an owner that has
    // given nobody a copy of the buffer and knows that the data is that long.
    [[gnu::visibility("hidden")]] unsigned char* advanceUnshared(std::uint32_t n) noexcept {
        assert(n <= length() - m_position);
        const TqByteVector& bytes = m_bytes;
        const unsigned char& place = bytes[static_cast<int>(m_position)];
        m_position += n;
        return const_cast<unsigned char*>(&place);
    }
    [[gnu::visibility("hidden")]] void writeBytesElsewhere(const unsigned char* buf, std::uint32_t n);
    unsigned char* setLogicalLength(std::uint64_t length);
    unsigned char* writableBytes();

    TqByteVector m_bytes;
    std::uint32_t m_position = 0;
};
