#include "platform/FileName.h"

#include "platform/Utf8.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace tq::platform {

namespace {

// Asked first, because a C library may encode more than Unicode has: longer forms of UTF-8 that name no character.
bool isUnicode(const wchar_t* name) {
    constexpr char32_t kLastCharacter = 0x10FFFF;
    while (*name != L'\0' && static_cast<char32_t>(*name) <= kLastCharacter)
        ++name;
    return *name == L'\0';
}

bool toLocaleEncoding(const wchar_t* name, std::string& out) {
    constexpr auto kNotExpressible = static_cast<std::size_t>(-1);
    const std::size_t length = std::wcstombs(nullptr, name, 0);
    if (length == kNotExpressible)
        return false;
    out.resize(length); // the terminator has a place of its own behind these
    return std::wcstombs(out.data(), name, length + 1) == length;
}

void toUtf8(const wchar_t* name, std::string& out) {
    out.clear();
    for (; *name != L'\0'; ++name) {
        char sequence[kMaxUtf8Length];
        out.append(sequence, encodeUtf8(static_cast<char32_t>(*name), sequence));
    }
}

} // namespace

bool toFileName(const wchar_t* name, std::string& out) {
    if (!isUnicode(name))
        return false;
    const int before = errno;
    if (!toLocaleEncoding(name, out))
        toUtf8(name, out);
    errno = before;
    return true;
}

} // namespace tq::platform
