// Text: conversions between bytes and characters, wide formatting, functions with a locale argument, expressions.

#include "shims/Text.h"

#include "shims/Imports.h"
#include "shims/Locales.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <regex.h>
#include <unordered_map>
#include <vector>

namespace macho {

namespace {

constexpr auto kFailed = static_cast<std::size_t>(-1);

bool isByte(wchar_t c) {
    return static_cast<std::uint32_t>(c) <= 0xFF;
}

std::size_t narrow(char* out, const wchar_t* text, std::size_t size) {
    if (!areBytesCharacters())
        return std::wcstombs(out, text, size);
    std::size_t i = 0;
    for (; out == nullptr || i < size; ++i) {
        if (!isByte(text[i])) {
            errno = EILSEQ;
            return kFailed;
        }
        if (out != nullptr)
            out[i] = static_cast<char>(text[i]);
        if (text[i] == 0)
            break;
    }
    return i;
}

std::size_t widen(wchar_t* out, const char* text, std::size_t size) {
    if (!areBytesCharacters())
        return std::mbstowcs(out, text, size);
    std::size_t i = 0;
    for (; out == nullptr || i < size; ++i) {
        if (out != nullptr)
            out[i] = static_cast<unsigned char>(text[i]);
        if (text[i] == 0)
            break;
    }
    return i;
}

bool isExpressible(wchar_t c) {
    if (areBytesCharacters())
        return isByte(c);
    char bytes[MB_LEN_MAX];
    std::mbstate_t state{};
    return std::wcrtomb(bytes, c, &state) != kFailed;
}

int formatWideVariadic(wchar_t* out, std::size_t size, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int result = formatWide(out, size, format, arguments);
    va_end(arguments);
    return result;
}

// The functions with a locale argument that the C library here lacks: at the end, or before the format.
template <auto kFunction>
struct InLocale;

template <class Result, class... Arguments, bool kIsNoexcept, Result (*kFunction)(Arguments...) noexcept(kIsNoexcept)>
struct InLocale<kFunction> {
    static Result call(Arguments... arguments, locale_t locale) {
        const LocaleScope scope(locale);
        return kFunction(arguments...);
    }
};

template <auto kFunction, class... Arguments>
int formattedInLocale(Arguments... before, locale_t locale, const char* format, ...) {
    const LocaleScope scope(locale);
    std::va_list arguments;
    va_start(arguments, format);
    const int result = kFunction(before..., format, arguments);
    va_end(arguments);
    return result;
}

double tenToThe(double exponent) {
    return ::exp10(exponent);
}

// An expression there is smaller than one here, so ours is kept aside.
std::unordered_map<const void*, regex_t>& expressions() {
    static std::unordered_map<const void*, regex_t> all;
    return all;
}

int compileExpression(void* place, const char* text, int flags) {
    const int here = ((flags & 1) != 0 ? REG_EXTENDED : 0) | ((flags & 2) != 0 ? REG_ICASE : 0) |
                     ((flags & 4) != 0 ? REG_NOSUB : 0) | ((flags & 8) != 0 ? REG_NEWLINE : 0);
    regex_t expression;
    const int error = ::regcomp(&expression, text, here);
    if (error == 0)
        expressions()[place] = expression;
    return error;
}

struct Match {
    std::int64_t start, end;
};

int matchExpression(const void* place, const char* text, std::size_t count, Match* matches, int flags) {
    std::vector<regmatch_t> here(count);
    const int error = ::regexec(&expressions().at(place), text, count, here.data(), flags);
    for (std::size_t i = 0; error == 0 && i < count; ++i)
        matches[i] = {here[i].rm_so, here[i].rm_eo};
    return error;
}

void freeExpression(void* place) {
    if (const auto found = expressions().find(place); found != expressions().end()) {
        ::regfree(&found->second);
        expressions().erase(found);
    }
}

} // namespace

int formatWide(wchar_t* out, std::size_t size, const wchar_t* format, std::va_list arguments) {
    std::vector<wchar_t> whole(std::max<std::size_t>(size, 1));
    const int count = std::vswprintf(whole.data(), size, format, arguments);
    if (count < 0) {
        if (size != 0)
            out[size - 1] = L'\0';
        errno = EOVERFLOW;
        return -1;
    }
    const auto end = whole.begin() + count;
    if (!std::all_of(whole.begin(), end, isExpressible)) {
        errno = EILSEQ;
        return -1;
    }
    *std::copy(whole.begin(), std::find(whole.begin(), end, L'\0'), out) = L'\0';
    return count;
}

void addTextShims(ImportTable& table) {
    table.add("_wcstombs", narrow);
    table.add("_mbstowcs", widen);
    table.add("_vswprintf", formatWide);
    table.add("_swprintf", formatWideVariadic);
    table.add("_btowc_l", InLocale<std::btowc>::call);
    table.add("_wctob_l", InLocale<std::wctob>::call);
    table.add("_mbrlen_l", InLocale<std::mbrlen>::call);
    table.add("_mbrtowc_l", InLocale<std::mbrtowc>::call);
    table.add("_mbtowc_l", InLocale<std::mbtowc>::call);
    table.add("_mbsnrtowcs_l", InLocale<::mbsnrtowcs>::call);
    table.add("_mbsrtowcs_l", InLocale<std::mbsrtowcs>::call);
    table.add("_wcrtomb_l", InLocale<std::wcrtomb>::call);
    table.add("_wcsnrtombs_l", InLocale<::wcsnrtombs>::call);
    table.add("_snprintf_l", formattedInLocale<std::vsnprintf, char*, std::size_t>);
    table.add("_asprintf_l", formattedInLocale<::vasprintf, char**>);
    table.add("_sscanf_l", formattedInLocale<std::vsscanf, const char*>);
    table.add("___exp10", tenToThe);
    table.add("_regcomp", compileExpression);
    table.add("_regexec", matchExpression);
    table.add("_regfree", freeExpression);
}

} // namespace macho
