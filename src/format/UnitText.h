#pragma once

#include "format/DigitText.h"
#include "format/NumberText.h"

#include <TqOsBase/format/LumoAppUnitSets.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The process-wide unit settings.
extern LumoAppUnitSets g_appUnits;

namespace tq::detail {

/// Appends to a caller's buffer of at least one character. What does not fit is cut; terminate() ends the text.
class UnitWriter {
public:
    /// `size` counts the terminating 0 and is above 0.
    UnitWriter(wchar_t* out, int size) : m_begin(out), m_cursor(out), m_last(out + size - 1) {}

    void put(wchar_t c) {
        if (m_cursor != m_last)
            *m_cursor++ = c;
    }
    void put(std::wstring_view text) { m_cursor += text.copy(m_cursor, room()); }
    /// A number of 0 or more.
    void putInteger(std::int64_t value) {
        const auto magnitude = static_cast<std::uint64_t>(value);
        // Most inches, numerators and minutes; whether they have one digit or two is as good as random.
        if (magnitude < 100 && room() >= 2) [[likely]] {
            const bool isPair = magnitude >= 10;
            writeDigitPair(m_cursor, isPair ? magnitude : magnitude * 10);
            m_cursor += isPair ? 2 : 1;
            return;
        }
        putNumber([magnitude](wchar_t* out) {
            const int digits = decimalDigits(magnitude | 1);
            writeDigits(out, magnitude, digits);
            return digits;
        });
    }
    void putFixed(double value, int decimals) {
        putNumber([=](wchar_t* out) { return writeFixed(out, value, decimals, false); });
    }
    void putScientific(double value, int decimals) {
        putNumber([=](wchar_t* out) { return writeScientific(out, value, decimals); });
    }
    /// Ends the text at `at`, a place in it.
    void endAt(wchar_t* at) { m_cursor = at; }
    void terminate() { *m_cursor = L'\0'; }

    wchar_t* here() const { return m_cursor; }
    unsigned length() const { return static_cast<unsigned>(m_cursor - m_begin); }
    /// The text from `at` on.
    std::wstring_view from(const wchar_t* at) const { return {at, static_cast<std::size_t>(m_cursor - at)}; }

private:
    std::size_t room() const { return static_cast<std::size_t>(m_last - m_cursor); }
    // `write` writes a number in kNumberRoom characters and returns the length of its text.
    template <class Write>
    void putNumber(Write write) {
        m_cursor += room() >= kNumberRoom ? write(m_cursor) : writeCut(m_cursor, room(), write);
    }
    // Not a member function: the cursor stays in a register.
    template <class Write>
    [[gnu::noinline]] static int writeCut(wchar_t* cursor, std::size_t room, Write write) {
        wchar_t text[kNumberRoom];
        const auto length = static_cast<std::size_t>(write(text));
        return static_cast<int>(std::wstring_view(text, length).copy(cursor, room));
    }

    wchar_t* m_begin;
    wchar_t* m_cursor;
    wchar_t* m_last;
};

/// The escape of the degree sign in drawing text.
inline constexpr std::wstring_view kDegreeEscape = L"\\U+00B0";
inline constexpr wchar_t kInchMark = L'"';

/// FormatUtil::formatQModeDouble for a buffer that is there, with the length of the text as its result.
/// Throws std::bad_alloc.
unsigned formatQMode(wchar_t* out, int size, double value, int mode, unsigned maxLength);

/// Whether the dash bit of the settings is in force under the Q mode flags.
bool isDashBitSet(int flags);

} // namespace tq::detail
