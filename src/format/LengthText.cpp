#include "format/LengthText.h"

#include "format/UnitSettings.h"

#include <TqOsBase/format/QMode.h>

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdint>
#include <cwchar>

namespace tq::detail {

namespace {

constexpr int kMaxDenominatorPower = 30;
constexpr double kInchesPerFoot = 12;
constexpr std::int64_t kWholeFoot = 12;
// A length below this has no feet; above the next limit it is shown in scientific notation.
constexpr double kSmallestWithFeet = 2.6700886302086417e-307;
constexpr double kLargestInInches = 1.19999e11;
// What scientific notation needs beyond its decimals: digit, point and an exponent of four characters.
constexpr unsigned kScientificFrame = 6;

// Engineering and architectural units show feet; fractional units count all in inches.
class InchText {
public:
    InchText(const UnitWriter& writer, int unitMode, int flags, int precision)
        : m_writer(writer), m_unitMode(unitMode), m_flags(flags), m_precision(std::max(precision, 0)),
          m_dash(isDashBitSet(flags)) {}

    void write(double length) {
        std::int64_t feet = 0;
        double inches = length;
        if (showsFeet() && length >= kSmallestWithFeet) {
            feet = static_cast<std::int64_t>(length / kInchesPerFoot);
            // Exact: both numbers are multiples of the length's last bit, and the difference is smaller than they are.
            inches = length - kInchesPerFoot * static_cast<double>(feet);
            // The quotient was rounded up to a whole number: 83.99999999999999 where the processor rounds upward.
            if (inches < 0) [[unlikely]]
                inches = length - kInchesPerFoot * static_cast<double>(--feet);
        }
        wchar_t* const start = m_writer.here();
        for (; !tryWrite(feet, inches); ++feet, inches = 0)
            m_writer.endAt(start);
        if (!showsFeet())
            return;
        if (m_wroteFeet && m_inchText == m_writer.here()) {
            if (m_inchText != start && m_inchText[-1] == L'-')
                m_writer.endAt(m_inchText - 1);
        } else {
            m_writer.put(kInchMark);
        }
    }

    bool stacked() const { return m_stacked; }
    wchar_t* end() const { return m_writer.here(); }

private:
    bool showsFeet() const { return m_unitMode != kLinearFractional; }

    // False when rounding makes 12 inches of less, which are one foot more: 11.99 to sixteenths.
    bool tryWrite(std::int64_t feet, double inches) {
        m_wroteFeet = showsFeet() && (feet != 0 || (m_flags & kQFlagSuppressZeroFeet) == 0);
        if (m_wroteFeet) {
            m_writer.putInteger(feet);
            m_writer.put(L'\'');
            if (!m_dash)
                m_writer.put(L'-');
        }
        m_inchText = m_writer.here();
        return m_unitMode == kLinearEngineering ? tryWriteDecimalInches(inches) : tryWriteFraction(inches);
    }

    bool tryWriteDecimalInches(double inches) {
        m_writer.putFixed(inches, m_precision);
        const std::wstring_view text = m_writer.from(m_inchText);
        // Inches are less than 12.
        if (text.size() >= 2 && text[0] == L'1' && text[1] == L'2')
            return false;
        if (m_wroteFeet && (m_flags & kQFlagSuppressZeroInches) != 0 &&
            text.find_first_not_of(L"0.") == std::wstring_view::npos)
            m_writer.endAt(m_inchText);
        return true;
    }

    bool tryWriteFraction(double inches) {
        auto wholeInches = static_cast<std::int64_t>(inches);
        const double fraction = inches - static_cast<double>(wholeInches);
        int power = std::min(m_precision, kMaxDenominatorPower);
        // One half is added to the doubled integer part, because a sum of doubles would itself be rounded.
        const double doubled = fraction * static_cast<double>(std::int64_t{2} << power);
        std::int64_t numerator = (static_cast<std::int64_t>(doubled) + 1) / 2;
        if (numerator == std::int64_t{1} << power) {
            numerator = 0;
            ++wholeInches;
            if (showsFeet() && wholeInches == kWholeFoot)
                return false;
        }
        if (numerator != 0) {
            const int halvings = std::countr_zero(static_cast<std::uint64_t>(numerator));
            numerator >>= halvings;
            power -= halvings;
        }
        const bool suppressed = m_wroteFeet && (m_flags & kQFlagSuppressZeroInches) != 0;
        if (wholeInches != 0 || (numerator == 0 && !suppressed)) {
            m_writer.putInteger(wholeInches);
            if (numerator != 0 && (m_flags & kQFlagDrawingText) == 0)
                m_writer.put(m_dash ? L'-' : L' ');
        }
        if (numerator != 0 && (m_flags & kQFlagDrawingText) != 0)
            writeStacked(numerator, std::int64_t{1} << power);
        else if (numerator != 0)
            writePlain(numerator, L'/', std::int64_t{1} << power);
        return true;
    }

    void writePlain(std::int64_t numerator, wchar_t bar, std::int64_t denominator) {
        m_writer.putInteger(numerator);
        m_writer.put(bar);
        m_writer.putInteger(denominator);
    }

    // {\H<height>x;\S<n>/<d>;}: the height as "%g" shows it, with all its decimals.
    void writeStacked(std::int64_t numerator, std::int64_t denominator) {
        constexpr int kHeightDecimals = 6;
        m_stacked = true;
        m_writer.put(L"{\\H");
        m_writer.putFixed(t_appUnits.settings.fractionHeight, kHeightDecimals);
        m_writer.put(L"x;\\S");
        writePlain(numerator, t_appUnits.settings.fractionStackStyle == 0 ? L'/' : L'#', denominator);
        m_writer.put(L";}");
    }

    // A copy, which stays in registers.
    UnitWriter m_writer;
    int m_unitMode;
    int m_flags;
    int m_precision;
    bool m_dash;
    bool m_wroteFeet = false;
    wchar_t* m_inchText = nullptr; // where the text of the inches begins
    bool m_stacked = false;
};

void writeScientificLength(UnitWriter& writer, double value, int precision, unsigned maxLength) {
    const unsigned room = maxLength > kScientificFrame ? maxLength - kScientificFrame : 0;
    writer.putScientific(value, static_cast<int>(std::min<unsigned>(room, static_cast<unsigned>(precision))));
}

bool isFeetAndInches(int unitMode) {
    return unitMode == kLinearEngineering || unitMode == kLinearArchitectural || unitMode == kLinearFractional;
}

} // namespace

void formatLength(UnitWriter& writer, int unitMode, int precision, double value, int flags, unsigned maxLength) {
    assert(!(value < 0));
    wchar_t* const start = writer.here();
    unsigned length = 0;
    // Negated, so that NaN is scientific too.
    const bool scientific =
        unitMode == kLinearScientific || (isFeetAndInches(unitMode) && !(value <= kLargestInInches));
    if (scientific) {
        writeScientificLength(writer, value, precision, maxLength);
    } else if (unitMode == kLinearDecimal) {
        writer.putFixed(value, precision);
    } else if (isFeetAndInches(unitMode)) {
        length = doFormatQModeInchUnitInte(writer, unitMode, value, flags, precision);
    } else {
        return;
    }
    if (length != kStackedFractionLength && writer.from(start).size() > maxLength && !scientific) {
        writer.endAt(start);
        writeScientificLength(writer, value, precision, maxLength);
    }
    constexpr int kSuppression = kQFlagSuppressLeadingZero | kQFlagSuppressTrailingZeros;
    const std::wstring_view text = writer.from(start);
    if (unitMode == kLinearDecimal && (flags & kSuppression) != 0 && text.find(L'.') != std::wstring_view::npos &&
        text.find(L'E') == std::wstring_view::npos) {
        writer.terminate();
        delPrefixSurfixZero(flags, start);
        writer.endAt(start + std::wcslen(start));
    }
}

} // namespace tq::detail

void delPrefixSurfixZero(int flags, wchar_t* text) {
    if ((flags & kQFlagSuppressTrailingZeros) != 0) {
        constexpr std::size_t kEscapeLength = tq::detail::kDegreeEscape.size();
        constexpr std::size_t kShortestWithEscape = 10;
        const std::size_t length = std::wcslen(text);
        std::size_t tail = 0;
        if (length >= kShortestWithEscape && text + length - kEscapeLength == tq::detail::kDegreeEscape) {
            tail = kEscapeLength;
        } else if (length > 0) {
            const wchar_t last = text[length - 1];
            const bool isLetter = (last >= L'a' && last <= L'z') || (last >= L'A' && last <= L'Z');
            tail = isLetter || last == tq::detail::kInchMark ? 1 : 0;
        }
        std::size_t end = length - tail;
        while (end > 0 && text[end - 1] == L'0')
            --end;
        if (end > 0 && text[end - 1] == L'.')
            --end;
        std::wmemmove(text + end, text + length - tail, tail + 1);
    }
    if ((flags & kQFlagSuppressLeadingZero) != 0) {
        wchar_t* const number = text[0] == L'-' ? text + 1 : text;
        if (number[0] == L'0' && number[1] == L'.')
            std::wmemmove(number, number + 1, std::wcslen(number));
    }
}

unsigned doFormatQModeInchUnitInte(tq::detail::UnitWriter& writer, int unitMode, double inches, int flags,
                                   int precision) {
    assert(inches >= 0 && inches <= tq::detail::kLargestInInches);
    tq::detail::InchText text(writer, unitMode, flags, precision);
    text.write(inches);
    writer.endAt(text.end());
    return text.stacked() ? kStackedFractionLength : writer.length();
}
