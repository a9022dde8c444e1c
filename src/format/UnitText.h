#pragma once

#include <TqOsBase/format/LumoAppUnitSets.h>

#include <cstddef>

/// The process-wide unit settings.
extern LumoAppUnitSets g_appUnits;

namespace tq::detail {

/// Appends to a caller's buffer of at least one character. What does not fit is cut; the text is always terminated.
class UnitWriter {
public:
    /// `size` counts the terminating 0 and is above 0.
    UnitWriter(wchar_t* out, int size) : m_begin(out), m_cursor(out), m_last(out + size - 1) { *out = L'\0'; }

    void put(wchar_t c) { put(&c, 1); }
    void put(const wchar_t* text);
    void putInteger(long long value);
    void putFixed(double value, int decimals);
    void putScientific(double value, int decimals);
    /// Ends the text at `at`, a place in it or at the terminator of what was written behind it.
    void endAt(wchar_t* at);

    wchar_t* here() const { return m_cursor; }
    unsigned length() const { return static_cast<unsigned>(m_cursor - m_begin); }
    int room() const { return static_cast<int>(m_last - m_cursor) + 1; }

private:
    void put(const wchar_t* text, std::size_t count);

    wchar_t* m_begin;
    wchar_t* m_cursor;
    wchar_t* m_last;
};

/// The escape of the degree sign in drawing text.
inline constexpr wchar_t kDegreeEscape[] = L"\\U+00B0";
inline constexpr wchar_t kInchMark = L'"';

/// Whether the dash bit of the settings is in force under the Q mode flags.
bool isDashBitSet(int flags);

} // namespace tq::detail
