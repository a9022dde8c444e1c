#include "containers/RecordKeeping.h"
#include "stream/StreamBytes.h"
#include "stream/StreamErrors.h"

#include <TqOsBase/stream/TqFlatMemBuf.h>

#include <algorithm>
#include <climits>
#include <stdexcept>
#include <utility>

using tq::detail::fits;
using tq::detail::moveBytes;
using tq::detail::recordWith;
using tq::detail::throwOutOfStreamBuffer;

namespace {

std::uint64_t logicalLength(const TqByteVector& bytes) {
    return static_cast<std::uint64_t>(bytes.logicalLength());
}

void requireRange(const TqByteVector& bytes, std::uint64_t pos, std::uint64_t n) {
    if (!fits(pos, n, logicalLength(bytes)))
        throwOutOfStreamBuffer();
}

// pos + n as a length; wraps for no argument of the interface, because n has 32 bits and a `pos` beyond 32 bits throws.
std::uint64_t endOf(std::uint64_t pos, std::uint32_t n) {
    if (pos > UINT32_MAX)
        throwOutOfStreamBuffer();
    return pos + n;
}

// A length as the vector takes it, or what is thrown for one that it cannot take.
int vectorLength(std::uint64_t length) {
    if (length > UINT32_MAX)
        throwOutOfStreamBuffer();
    if (length > INT_MAX)
        throw std::length_error("TqFlatMemBuf: more than 2 GiB");
    return static_cast<int>(length);
}

} // namespace

TqFlatMemBuf::~TqFlatMemBuf() = default;

// Sets the length and returns the bytes, which no other buffer shares afterwards.
unsigned char* TqFlatMemBuf::setLogicalLength(std::uint64_t length) {
    m_bytes.setLogicalLength(vectorLength(length));
    return const_cast<unsigned char*>(std::as_const(m_bytes).asArrayPtr());
}

unsigned char* TqFlatMemBuf::writableBytes() {
    return m_bytes.asArrayPtr();
}

void TqFlatMemBuf::setlength(std::uint64_t length) {
    setLogicalLength(length);
}

void TqFlatMemBuf::truncate() {
    setLogicalLength(m_position);
}

void TqFlatMemBuf::rewind() {
    m_position = 0;
}

unsigned char* TqFlatMemBuf::buffer() {
    return writableBytes();
}

const unsigned char* TqFlatMemBuf::buffer() const {
    return m_bytes.asArrayPtr();
}

unsigned char TqFlatMemBuf::readByte() {
    if (m_position >= logicalLength(m_bytes))
        tq::detail::throwEndOfStreamBuffer();
    return std::as_const(m_bytes).asArrayPtr()[m_position++];
}

void TqFlatMemBuf::writeByte(unsigned char byte) {
    TqFlatMemBuf::writeBytes(&byte, 1);
}

void TqFlatMemBuf::writeByte(std::uint64_t pos, unsigned char byte) {
    const std::uint64_t end = endOf(pos, 1);
    const std::uint64_t before = logicalLength(m_bytes);
    const std::uint64_t after = end == 1 && before == 0 ? 1 : std::max(before, pos);
    if (end > static_cast<std::uint64_t>(m_bytes.physicalLength()))
        setLogicalLength(end); // the byte needs a place, also where it does not count
    setLogicalLength(after)[pos] = byte;
    m_position = static_cast<std::uint32_t>(pos);
}

unsigned char TqFlatMemBuf::getByte() {
    unsigned char byte = 0;
    TqFlatMemBuf::readBytes(&byte, 1);
    return byte;
}

unsigned char TqFlatMemBuf::getByte(std::uint64_t pos) {
    requireRange(m_bytes, pos, 1);
    return std::as_const(m_bytes).asArrayPtr()[pos];
}

void TqFlatMemBuf::setByte(unsigned char byte) {
    TqFlatMemBuf::setByte(m_position, byte);
}

void TqFlatMemBuf::setByte(std::uint64_t pos, unsigned char byte) {
    requireRange(m_bytes, pos, 1);
    writableBytes()[pos] = byte;
}

void TqFlatMemBuf::readBytes(unsigned char* buf, std::uint32_t n) {
    requireRange(m_bytes, m_position, n);
    const unsigned char* from = std::as_const(m_bytes).asArrayPtr() + m_position;
    m_position += n;
    moveBytes(buf, from, n);
}

void TqFlatMemBuf::readBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) {
    requireRange(m_bytes, pos, n);
    moveBytes(buf, std::as_const(m_bytes).asArrayPtr() + pos, n);
}

void TqFlatMemBuf::writeBytes(const unsigned char* buf, std::uint32_t n) {
    const std::uint64_t end = std::uint64_t{m_position} + n;
    unsigned char* const bytes = end <= INT_MAX ? m_bytes.setLogicalLengthAtHand(static_cast<int>(end)) : nullptr;
    if (bytes == nullptr) [[unlikely]]
        return writeBytesElsewhere(buf, n);
    moveBytes(bytes + m_position, buf, n);
    m_position = static_cast<std::uint32_t>(end);
}

// Where the bytes need storage first: more of it, or their own.
void TqFlatMemBuf::writeBytesElsewhere(const unsigned char* buf, std::uint32_t n) {
    const std::uint64_t end = std::uint64_t{m_position} + n;
    const auto keeper = recordWith(m_bytes, buf);
    moveBytes(setLogicalLength(end) + m_position, buf, n);
    m_position = static_cast<std::uint32_t>(end);
}

void TqFlatMemBuf::writeBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) {
    const std::uint64_t end = endOf(pos, n);
    const auto keeper = recordWith(m_bytes, buf);
    if (end > logicalLength(m_bytes))
        setLogicalLength(end);
    moveBytes(writableBytes() + pos, buf, n);
    m_position = static_cast<std::uint32_t>(pos);
}

void TqFlatMemBuf::getBytes(unsigned char* buf, std::uint32_t n) {
    TqFlatMemBuf::getBytes(m_position, buf, n);
}

void TqFlatMemBuf::getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) {
    if (!fits(pos, n, static_cast<std::uint64_t>(m_bytes.physicalLength())))
        throwOutOfStreamBuffer();
    moveBytes(buf, std::as_const(m_bytes).asArrayPtr() + pos, n);
}

void TqFlatMemBuf::setBytes(const unsigned char* buf, std::uint32_t n) {
    TqFlatMemBuf::setBytes(m_position, buf, n);
}

void TqFlatMemBuf::setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) {
    requireRange(m_bytes, pos, n);
    moveBytes(writableBytes() + pos, buf, n);
}

std::uint64_t TqFlatMemBuf::bufSize() const {
    return static_cast<std::uint64_t>(m_bytes.physicalLength());
}

void TqFlatMemBuf::resize(std::uint32_t length) {
    setLogicalLength(length);
}

void TqFlatMemBuf::reserve(std::uint32_t size) {
    if (size <= static_cast<std::uint64_t>(m_bytes.physicalLength()))
        return;
    const int length = m_bytes.logicalLength();
    m_bytes.setPhysicalLength(static_cast<int>(size));
    m_bytes.setLogicalLength(length);
}

std::uint64_t TqFlatMemBuf::moveTo(std::uint64_t pos) {
    if (pos > logicalLength(m_bytes))
        throwOutOfStreamBuffer();
    m_position = static_cast<std::uint32_t>(pos);
    return m_position;
}

void TqFlatMemBuf::open(void* data, std::uint32_t size, std::uint32_t pos) {
    const std::uint64_t length = std::uint64_t{size} + pos;
    static_cast<void>(vectorLength(length));
    const auto keeper = recordWith(m_bytes, data);
    close();
    moveBytes(setLogicalLength(length), static_cast<const unsigned char*>(data), size);
    m_position = pos;
}

void TqFlatMemBuf::close() {
    m_bytes.setLogicalLength(0);
    m_position = 0;
}
