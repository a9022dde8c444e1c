#include "base/LocaleText.h"

#include "base/CharacterClass.h"
#include "base/CharacterLocale.h"
#include "base/ErrnoKeeper.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>

namespace tq::detail {

namespace {

constexpr auto kNotExpressible = static_cast<std::size_t>(-1);

bool isAsciiText(std::wstring_view text) {
    return std::all_of(text.begin(), text.end(), isAscii);
}

} // namespace

bool toLocaleText(const wchar_t* text, std::string& out) {
    const ErrnoKeeper keeper;
    if (isPlainLocale() && !isAsciiText(text))
        return false;
    const std::size_t length = std::wcstombs(nullptr, text, 0);
    if (length == kNotExpressible)
        return false;
    out.resize(length); // the terminator has a place of its own after these
    std::wstring back;
    return std::wcstombs(out.data(), text, length + 1) == length && fromLocaleText(out.c_str(), back) && back == text;
}

bool fromLocaleText(const char* text, std::wstring& out) {
    const ErrnoKeeper keeper;
    const std::size_t length = std::mbstowcs(nullptr, text, 0);
    if (length == kNotExpressible)
        return false;
    out.resize(length);
    return std::mbstowcs(out.data(), text, length + 1) == length && (!isPlainLocale() || isAsciiText(out));
}

} // namespace tq::detail
