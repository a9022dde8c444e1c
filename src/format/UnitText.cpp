#include "format/UnitText.h"

#include "format/DigitText.h"
#include "format/NumberText.h"

#include <TqOsBase/format/QMode.h>

#include <algorithm>
#include <cwchar>

constinit LumoAppUnitSets g_appUnits;

void initOsBaseUnits(LumoAppUnitSets& units) {
    g_appUnits = units;
}

namespace tq::detail {

bool isDashBitSet(int flags) {
    return (g_appUnits.flags & kUnitFlagDash) != 0 && (flags & kQFlagIgnoreDash) == 0;
}

void UnitWriter::put(const wchar_t* text, std::size_t count) {
    count = std::min(count, static_cast<std::size_t>(m_last - m_cursor));
    m_cursor = std::copy_n(text, count, m_cursor);
    *m_cursor = L'\0';
}

void UnitWriter::put(const wchar_t* text) {
    put(text, std::wcslen(text));
}

void UnitWriter::putInteger(long long value) {
    wchar_t text[1 + kDecimalRoom];
    const auto bits = static_cast<std::uint64_t>(value);
    *text = L'-';
    const int sign = value < 0 ? 1 : 0;
    const int digits = writeDecimal(text + sign, value < 0 ? 0 - bits : bits);
    put(text, static_cast<std::size_t>(digits + sign));
}

void UnitWriter::putFixed(double value, int decimals) {
    wchar_t text[kMaxNumberText + 1];
    put(text, static_cast<std::size_t>(writeFixed(text, value, decimals, false)));
}

void UnitWriter::putScientific(double value, int decimals) {
    wchar_t text[kMaxNumberText + 1];
    put(text, static_cast<std::size_t>(writeScientific(text, value, decimals)));
}

void UnitWriter::endAt(wchar_t* at) {
    m_cursor = at;
    *at = L'\0';
}

} // namespace tq::detail
