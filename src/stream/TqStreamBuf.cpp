#include "stream/StreamBytes.h"
#include "stream/StreamErrors.h"
#include "stream/StreamPosition.h"

#include <TqOsBase/stream/TqStreamBuf.h>

#include <algorithm>
#include <cstring>

using tq::detail::thenReturnTo;

namespace {

// A step of a copy; lives on the stack.
constexpr std::uint64_t kCopyPiece = 4096;

template <class Action>
void doAtPosition(TqStreamBuf& stream, std::uint64_t pos, const Action& action) {
    const std::uint64_t before = stream.tell();
    if (before == pos) {
        action();
        return;
    }
    stream.seek(pos, TqIO::kSeekStart);
    thenReturnTo(stream, before, action);
}

// Moves `count` bytes between the two positions. A read that falls short leaves zeros.
void copyPieces(TqStreamBuf& src, TqStreamBuf& dst, std::uint64_t count) {
    unsigned char piece[kCopyPiece];
    while (count > 0) {
        const auto n = static_cast<std::uint32_t>(std::min(count, kCopyPiece));
        std::memset(piece, 0, n);
        src.readBytes(piece, n);
        dst.writeBytes(piece, n);
        count -= n;
    }
}

std::uint64_t remainingBytes(const TqStreamBuf& stream) {
    const std::uint64_t position = stream.tell();
    const std::uint64_t length = stream.length();
    return position < length ? length - position : 0;
}

// The bytes that a copy's range names in `stream`, which is moved to the start of the range.
std::uint64_t enterRange(TqStreamBuf& stream, std::uint64_t from, std::uint64_t to) {
    if (from == to)
        return from == 0 ? remainingBytes(stream) : 0;
    const auto [first, last] = std::minmax(from, to);
    stream.seek(first, TqIO::kSeekStart);
    return last - first;
}

} // namespace

TqStreamBuf::~TqStreamBuf() = default;

bool TqStreamBuf::isEOS() const {
    return tell() >= length();
}

void TqStreamBuf::setlength(std::uint64_t /*length*/) {}

void TqStreamBuf::rewind() {
    seek(0, TqIO::kSeekStart);
}

unsigned char* TqStreamBuf::buffer() {
    return nullptr;
}

const unsigned char* TqStreamBuf::buffer() const {
    return nullptr;
}

unsigned char TqStreamBuf::readByte() {
    unsigned char byte = 0;
    readBytes(&byte, 1);
    return byte;
}

unsigned char TqStreamBuf::readByte(std::uint64_t pos) {
    unsigned char byte = 0;
    readBytes(pos, &byte, 1);
    return byte;
}

void TqStreamBuf::writeByte(unsigned char byte) {
    writeBytes(&byte, 1);
}

void TqStreamBuf::writeByte(std::uint64_t pos, unsigned char byte) {
    writeBytes(pos, &byte, 1);
}

unsigned char TqStreamBuf::getByte() {
    return getByte(tell());
}

unsigned char TqStreamBuf::getByte(std::uint64_t pos) {
    unsigned char byte = 0;
    getBytes(pos, &byte, 1);
    return byte;
}

void TqStreamBuf::setByte(unsigned char byte) {
    setByte(tell(), byte);
}

void TqStreamBuf::setByte(std::uint64_t pos, unsigned char byte) {
    setBytes(pos, &byte, 1);
}

void TqStreamBuf::readBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) {
    if (!tq::detail::fits(pos, n, length()))
        tq::detail::throwOutOfStreamBuffer();
    doAtPosition(*this, pos, [&] { readBytes(buf, n); });
}

void TqStreamBuf::writeBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) {
    if (!tq::detail::fits(pos, n, length()))
        tq::detail::throwOutOfStreamBuffer();
    doAtPosition(*this, pos, [&] { writeBytes(buf, n); });
}

void TqStreamBuf::copyFrom(TqStreamBuf* src, std::uint64_t from, std::uint64_t to) {
    if (src == nullptr)
        return;
    const std::uint64_t before = src->tell();
    const std::uint64_t count = enterRange(*src, from, to);
    if (count != 0)
        thenReturnTo(*src, before, [&] { copyPieces(*src, *this, count); });
}

void TqStreamBuf::copyTo(TqStreamBuf* dst, std::uint64_t from, std::uint64_t to) {
    if (dst == nullptr)
        return;
    const std::uint64_t before = tell();
    const std::uint64_t count = std::min(enterRange(*dst, from, to), remainingBytes(*this));
    if (count != 0)
        thenReturnTo(*this, before, [&] { copyPieces(*this, *dst, count); });
}
