#pragma once

/// \file
/// The interface of streams over memory.

#include <TqOsBase/stream/TqStreamBuf.h>

/// A stream over memory: adds the operations on storage, and seek() in terms of moveTo().
class TQ_API TqMemStreamBuf : public TqStreamBuf {
public:
    /// Moves to the place that `type` names and returns the new position; a type other than the four leaves the
    /// position alone. Throws what moveTo() throws; a sum beyond 64 bits and a difference below 0 lie beyond any data.
    std::uint64_t seek(std::uint64_t offset, TqIO::SeekType type) override;

    /// Bytes of storage, at least length().
    virtual std::uint64_t bufSize() const = 0;
    /// Sets the length.
    virtual void resize(std::uint32_t length) = 0;
    /// Makes room for `size` bytes.
    virtual void reserve(std::uint32_t size) = 0;
    /// Sets the position and returns it.
    virtual std::uint64_t moveTo(std::uint64_t pos) = 0;
    /// Begins anew with a copy of `size` bytes at `data`; the position is `pos`.
    virtual void open(void* data, std::uint32_t size, std::uint32_t pos) = 0;
    /// Position and length become 0.
    virtual void close() = 0;
};
