// Numbers: any text reads alike narrow and wide and as the C library reads it; any double, in its shortest digits and
// in 17, reads back; the fast digits are the exact ones.

#include "Check.h"
#include "fltcvt/RoundedDecimal.h"

#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::uint64_t bitsOf(double v) {
    return std::bit_cast<std::uint64_t>(v);
}

// Characters of numbers are kept, so that most mutations still are numbers.
std::string textOf(const std::uint8_t* data, std::size_t size) {
    constexpr char kCommon[] = "0123456789.eE+-00995";
    std::string text;
    for (std::size_t i = 0; i < size && data[i] != 0; ++i)
        text += data[i] < 0x80 ? static_cast<char>(data[i]) : kCommon[data[i] % (sizeof kCommon - 1)];
    return text;
}

void checkText(const std::string& text) {
    const std::wstring wide(text.begin(), text.end());
    char* end = nullptr;
    wchar_t* wideEnd = nullptr;
    const double v = tqStrToD(text.c_str(), &end);
    fuzz::check(bitsOf(tqStrToD(wide.c_str(), &wideEnd)) == bitsOf(v), "wide text reads alike");
    fuzz::check(wideEnd - wide.c_str() == end - text.c_str(), "and ends alike");
    // Beyond these characters the C library knows more forms.
    if (text.find_first_not_of("0123456789.eE+- ") != std::string::npos)
        return;
    char* libraryEnd = nullptr;
    fuzz::check(bitsOf(std::strtod(text.c_str(), &libraryEnd)) == bitsOf(v), "as the C library reads it");
    fuzz::check(libraryEnd == end, "and ends it");
}

// One number, with ties away from zero.
void checkNumber(double v, tq::detail::DigitRequest request, char* exact) {
    if (request.kind == tq::detail::DigitRequest::kShortest)
        return;
    request.rule = tq::detail::Rule::kAwayFromZero;
    const tq::detail::DigitLayout layout = tq::detail::exactDigits(v, request, exact);
    const tq::detail::RoundedDecimal number = tq::detail::roundedDecimal(v, request);
    std::uint64_t digits = 0;
    for (int i = 0; i < number.count; ++i)
        digits = digits * 10 + (i < layout.count ? static_cast<unsigned>(exact[i] - '0') : 0);
    fuzz::check(number.digits == digits && number.point == layout.point, "the exact number");
}

void checkDigits(double v, int mode, int ndigits) {
    int point = 0;
    int sign = 0;
    char* const digits = TqGdImpl::dtoa(v, mode, ndigits, &point, &sign, nullptr);
    fuzz::check(sign == (std::signbit(v) ? 1 : 0), "sign");
    if (std::isfinite(v) && v != 0) {
        char exact[tq::detail::kDigitRoom];
        const auto request = tq::detail::DigitRequest::ofMode(mode, ndigits);
        const tq::detail::DigitLayout layout = tq::detail::exactDigits(std::fabs(v), request, exact);
        fuzz::check(std::string(exact, static_cast<std::size_t>(layout.count)) == digits, "the exact digits");
        fuzz::check(layout.point == point, "the exact point");
        checkNumber(std::fabs(v), request, exact);
        if (mode == 0) {
            const std::string text = (sign != 0 ? "-0." : "0.") + std::string(digits) + "e" + std::to_string(point);
            fuzz::check(bitsOf(tqStrToD(text.c_str(), nullptr)) == bitsOf(v), "shortest digits read back");
        }
    }
    TqGdImpl::freedtoa(digits);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    checkText(textOf(data, size));
    std::uint8_t bytes[10] = {};
    std::copy_n(data, std::min(size, sizeof bytes), bytes);
    double v = 0;
    std::memcpy(&v, bytes, sizeof v);
    checkDigits(v, 0, 0);
    checkDigits(v, bytes[8] % 10, static_cast<int>(bytes[9]) - 50);
    if (std::isfinite(v)) {
        char text[64];
        tqFltToE(text, v, 16, 'e');
        fuzz::check(bitsOf(tqStrToD(text, nullptr)) == bitsOf(v), "17 digits read back");
    }
    return 0;
}
