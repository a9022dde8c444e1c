#pragma once

/// \file
/// The interface of all streams.

#include <TqOsBase/Export.h>
#include <TqOsBase/stream/TqIO.h>

#include <cstdint>

/// A random-access byte stream: a position, a length, reads and writes at the position or at a stated place. Read and
/// write move the position, get and set leave it, except where a class says otherwise. Positions and lengths are
/// 64-bit, byte counts 32-bit. One thread at a time.
///
/// What this class throws itself is a TqException whose m_pszFile is "Out of stream buffer!": a range beyond the data.
/// Whatever throws does so before it has changed anything, unless it says what stays behind. The order of the virtual
/// operations is part of the interface.
class TQ_API TqStreamBuf {
public:
    virtual ~TqStreamBuf();

    /// True when tell() >= length().
    virtual bool isEOS() const;
    /// The position.
    virtual std::uint64_t tell() const = 0;
    /// Bytes of data.
    virtual std::uint64_t length() const = 0;
    /// Does nothing here; a class that can be resized sets its length.
    virtual void setlength(std::uint64_t length);
    /// What this does is up to the class: the memory buffer ends at its position, a file buffer moves to its end.
    virtual void truncate() = 0;
    /// seek(0, kSeekStart).
    virtual void rewind();
    /// The data as one piece of memory; null here, where there is none.
    virtual unsigned char* buffer();
    virtual const unsigned char* buffer() const;
    /// Moves the position; the result is the class's own (the new position, or 0 for files).
    virtual std::uint64_t seek(std::uint64_t offset, TqIO::SeekType type) = 0;

    /// The single-byte operations are the operations on runs below, with n = 1. A read that yields nothing gives 0.
    virtual unsigned char readByte();
    virtual unsigned char readByte(std::uint64_t pos);
    /// writeBytes of one byte.
    virtual void writeByte(unsigned char byte);
    virtual void writeByte(std::uint64_t pos, unsigned char byte);
    /// getByte(tell()), so it moves the position where a positioned get does.
    virtual unsigned char getByte();
    virtual unsigned char getByte(std::uint64_t pos);
    /// setByte(tell(), byte), so it moves the position where a positioned set does.
    virtual void setByte(unsigned char byte);
    virtual void setByte(std::uint64_t pos, unsigned char byte);

    /// Reads at the position and moves it on.
    virtual void readBytes(unsigned char* buf, std::uint32_t n) = 0;
    /// Reads at `pos`. The position stays, unless it was `pos`: then it is pos + n afterwards. Throws "Out of stream
    /// buffer!" when pos + n > length().
    virtual void readBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n);
    /// Writes at the position and moves it on; whether what follows is kept is up to the class.
    virtual void writeBytes(const unsigned char* buf, std::uint32_t n) = 0;
    /// Writes at `pos`, with position and failure as in the positioned read: it never extends a stream.
    virtual void writeBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n);
    /// Reads at the position, or at `pos`, and leaves the position, except where a class says otherwise.
    virtual void getBytes(unsigned char* buf, std::uint32_t n) = 0;
    virtual void getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) = 0;
    /// Replaces bytes at the position, or at `pos`, and leaves the position, except where a class says otherwise.
    virtual void setBytes(const unsigned char* buf, std::uint32_t n) = 0;
    virtual void setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) = 0;

    /// Copies out of `src` to this stream's position, in pieces of 4,096 bytes; the range addresses the source. From
    /// its position to its end when both bounds are 0, else the bytes between the two bounds, in either order; equal
    /// bounds copy nothing, a null source neither. The count is not cut to what the source has: a memory source then
    /// throws, and zeros stand for what a file source does not have. The source's position is put back, also when it
    /// throws; pieces copied before that stay. A stream may be copied to itself.
    virtual void copyFrom(TqStreamBuf* src, std::uint64_t from, std::uint64_t to);
    /// Copies from this stream's position into `dst`; unlike in copyFrom the range addresses the destination, which is
    /// moved to the smaller bound (even if nothing is left to copy) and written as by writeBytes, and the count is cut
    /// to what this stream has. Both bounds 0: from the destination's position to its end; equal bounds copy nothing, a
    /// null destination neither. This stream's position is put back, also when it throws.
    virtual void copyTo(TqStreamBuf* dst, std::uint64_t from, std::uint64_t to);

protected:
    TqStreamBuf() = default;
    /// For descendants.
    TqStreamBuf(const TqStreamBuf&) = default;
    TqStreamBuf& operator=(const TqStreamBuf&) = default;
};
