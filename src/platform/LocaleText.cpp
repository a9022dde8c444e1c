#include "platform/LocaleText.h"

#include "platform/ErrnoKeeper.h"

#include <cstddef>
#include <cstdlib>

namespace tq::platform {

namespace {

constexpr auto kNotExpressible = static_cast<std::size_t>(-1);

} // namespace

bool toLocaleText(const wchar_t* text, std::string& out) {
    const ErrnoKeeper keeper;
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
    return std::mbstowcs(out.data(), text, length + 1) == length;
}

} // namespace tq::platform
