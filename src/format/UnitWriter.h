#pragma once

#include "fltcvt/WideDigits.h"
#include "format/NumberText.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tq::detail {

/// Room for any text in drawing units, with its terminator and what the digit writers may change after it. The longest
/// ones hold one number of kNumberRoom beside feet, inches or degrees.
inline constexpr int kUnitRoom = 250;

/// The integers of one digit or two; after one digit stands a zero.
inline constexpr std::array<WideDigitPair, 100> kShortIntegers = [] {
    std::array<WideDigitPair, 100> texts = kWideDigitPairs;
    for (std::size_t i = 0; i < 10; ++i)
        texts[i] = kWideDigitPairs[10 * i];
    return texts;
}();

/// Appends the pieces of a length or an angle to a buffer with room for kUnitRoom characters; terminate() ends the
/// text.
class UnitWriter {
public:
    explicit UnitWriter(wchar_t* out) : m_begin(out), m_cursor(out) {}

    void put(wchar_t c) { *m_cursor++ = c; }
    void put(std::wstring_view text) { m_cursor += text.copy(m_cursor, text.size()); }
    /// A number of 0 or more.
    void putInteger(std::int64_t value) {
        assert(value >= 0);
        const auto magnitude = static_cast<std::uint64_t>(value);
        // Most inches, numerators and minutes; whether they have one digit or two cannot be predicted, so no branch
        // asks.
        if (magnitude < kShortIntegers.size()) [[likely]] {
            std::memcpy(m_cursor, &kShortIntegers[magnitude], sizeof(WideDigitPair));
            m_cursor += 1 + static_cast<int>(magnitude >= 10);
            return;
        }
        const int digits = digitCount(magnitude);
        writeDigits(m_cursor, magnitude, digits);
        m_cursor += digits;
    }
    void putFixed(double value, int decimals) { m_cursor += writeFixed(m_cursor, value, decimals, false); }
    /// With two digits of exponent.
    void putScientific(double value, int decimals) {
        m_cursor += shortenExponent(m_cursor, writeScientific(m_cursor, value, decimals));
    }
    /// Ends the text at `at`, a place in it.
    void endAt(wchar_t* at) {
        assert(at >= m_begin && at < m_begin + kUnitRoom);
        m_cursor = at;
    }
    void terminate() { *m_cursor = L'\0'; }

    wchar_t* here() const { return m_cursor; }
    unsigned length() const { return static_cast<unsigned>(m_cursor - m_begin); }
    /// The text from `at` on.
    std::wstring_view from(const wchar_t* at) const { return {at, static_cast<std::size_t>(m_cursor - at)}; }

private:
    wchar_t* m_begin;
    wchar_t* m_cursor;
};

/// The escape of the degree sign in drawing text.
inline constexpr std::wstring_view kDegreeEscape = L"\\U+00B0";
inline constexpr wchar_t kInchMark = L'"';

} // namespace tq::detail
