#include "codepage/Escapes.h"

#include <TqOsBase/codepage/TqAnsiTextIterator.h>
#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstddef>
#include <cstring>
#include <new>

using namespace tq::detail;

namespace {

constexpr int kBrokeNowhere = 0;
constexpr int kBrokeAtEnd = 1;
constexpr int kBrokeAtLimit = 3;

constexpr unsigned base(bool hex) {
    return hex ? 16 : 10;
}

// The value of a hexadecimal digit, negative for any other byte.
int digitValue(char byte) noexcept {
    return kHexValues[byteOf(byte)];
}

// Gives `out`, which is empty, these bytes. The room asked for is the caller's limit and may be absurd.
void store(TqStringA& out, const char* bytes, int count, int room) {
    assert(out.isEmpty() && count >= 0);
    if (count == 0)
        return;
    char* buffer = nullptr;
    try {
        buffer = out.getBuffer(std::max(count, room));
    } catch (const std::bad_alloc&) {
        buffer = out.getBuffer(count);
    }
    std::memcpy(buffer, bytes, static_cast<std::size_t>(count));
    out.releaseBuffer(count);
}

} // namespace

TqAnsiTextIterator::TqAnsiTextIterator(const TqStringA& text, code_page_id id) noexcept {
    init(text, id);
}

TqAnsiTextIterator::~TqAnsiTextIterator() {}

void TqAnsiTextIterator::init(const TqStringA& text, code_page_id id) noexcept {
    m_start = m_position = m_characterStart = text.c_str();
    m_length = static_cast<int>(text.length());
    m_codePage = id;
    m_current = 0;
    m_multiByte = IsMultiByteCodePage(id);
    m_end = m_multiByte ? m_start : m_start + m_length;
}

bool TqAnsiTextIterator::isAtEnd() const noexcept {
    return *m_position == 0 || (m_length != kUnbounded && m_position >= m_start + m_length);
}

namespace {

// Callers that were compiled before nextChar() was inline find it in the library.
[[maybe_unused, gnu::used]] constexpr auto kNextChar = &TqAnsiTextIterator::nextChar;

} // namespace

unsigned int TqAnsiTextIterator::nextUncommonChar() noexcept {
    m_characterStart = m_position;
    m_current = 0;
    if (isAtEnd())
        return 0;
    if (*m_position == '\\') {
        if (const int value = unicodeEscapeValue(m_position); value != kNoEscape) {
            m_position += kUnicodeEscapeLength;
            return m_current = static_cast<unsigned>(value);
        }
        if (const int value = mifEscapeValue(m_position); value != kNoEscape) {
            m_position += kMifEscapeLength;
            return m_current = static_cast<unsigned>(value);
        }
    }
    m_current = byteOf(*m_position++);
    if (m_multiByte && *m_position != 0 && TqCharMapper::isLeadByte(static_cast<unsigned char>(m_current), m_codePage))
        m_current = m_current << 8 | byteOf(*m_position++);
    return m_current;
}

unsigned int TqAnsiTextIterator::appendDigits(int count, bool hex) noexcept {
    for (; count > 0; --count) {
        const int digit = digitValue(*m_position);
        if (digit < 0 || static_cast<unsigned>(digit) >= base(hex))
            break;
        m_current = m_current * base(hex) + static_cast<unsigned>(digit);
        ++m_position;
    }
    return m_current;
}

unsigned int TqAnsiTextIterator::appendDigitsNoCheck(int count, bool hex) noexcept {
    for (; count > 0 && *m_position != 0; --count)
        m_current = m_current * base(hex) + static_cast<unsigned>(std::max(digitValue(*m_position++), 0));
    // Either base is even, so that as many zeros as the value has bits leave nothing of it.
    for (count = std::min(count, static_cast<int>(sizeof m_current * CHAR_BIT)); count > 0; --count)
        m_current *= base(hex);
    return m_current;
}

int TqAnsiTextIterator::breakSafely(int maxBytes, TqStringA& out) {
    const char* const mark = m_characterStart;
    unsigned int last = nextChar();
    out = TqStringA();
    if (*m_position == 0)
        return kBrokeNowhere;
    while (last != 0 && m_position - mark < maxBytes)
        last = nextChar();
    store(out, mark, static_cast<int>(m_characterStart - mark), maxBytes);
    return last != 0 ? kBrokeAtLimit : kBrokeAtEnd;
}

bool TqAnsiTextIteratorNotRequired(const TqStringA& text, code_page_id id) noexcept {
    return !IsMultiByteCodePage(id) && std::memchr(text.c_str(), '\\', text.length()) == nullptr;
}
