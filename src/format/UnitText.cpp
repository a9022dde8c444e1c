#include "format/UnitText.h"

#include "format/DigitText.h"
#include "format/NumberText.h"

#include <TqOsBase/format/QMode.h>

constinit LumoAppUnitSets g_appUnits;

void initOsBaseUnits(LumoAppUnitSets& units) {
    g_appUnits = units;
}

namespace tq::detail {

bool isDashBitSet(int flags) {
    return (g_appUnits.flags & kUnitFlagDash) != 0 && (flags & kQFlagIgnoreDash) == 0;
}

void UnitWriter::put(std::wstring_view text) {
    m_cursor += text.copy(m_cursor, room());
}

// `write` writes a number of in kNumberRoom characters and returns the length of its text.
template <class Write>
void UnitWriter::putNumber(Write write) {
    constexpr std::size_t kRoom = kNumberRoom;
    if (room() >= kRoom) {
        m_cursor += write(m_cursor);
        return;
    }
    wchar_t text[kRoom];
    put(std::wstring_view(text, static_cast<std::size_t>(write(text))));
}

void UnitWriter::putInteger(std::int64_t value) {
    // Most numerators, inches and minutes.
    if (value < 10) {
        put(static_cast<wchar_t>(L'0' + value));
        return;
    }
    const auto magnitude = static_cast<std::uint64_t>(value);
    putNumber([magnitude](wchar_t* out) {
        const int digits = decimalDigits(magnitude);
        writeDigits(out, magnitude, digits);
        return digits;
    });
}

void UnitWriter::putFixed(double value, int decimals) {
    putNumber([=](wchar_t* out) { return writeFixed(out, value, decimals, false); });
}

void UnitWriter::putScientific(double value, int decimals) {
    putNumber([=](wchar_t* out) { return writeScientific(out, value, decimals); });
}

} // namespace tq::detail
