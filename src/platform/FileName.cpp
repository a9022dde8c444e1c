#include "platform/FileName.h"

#include "platform/Utf8.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace tq::platform {

namespace {

// Asked first, because a C library may encode more than Unicode has: longer forms of UTF-8 that name no character.
bool isUnicode(const wchar_t* name) {
    constexpr char32_t kLastCharacter = 0x10FFFF;
    while (*name != L'\0' && static_cast<char32_t>(*name) <= kLastCharacter)
        ++name;
    return *name == L'\0';
}

constexpr auto kNotExpressible = static_cast<std::size_t>(-1);

bool toLocaleEncoding(const wchar_t* name, std::string& out) {
    const std::size_t length = std::wcstombs(nullptr, name, 0);
    if (length == kNotExpressible)
        return false;
    out.resize(length); // the terminator has a place of its own behind these
    return std::wcstombs(out.data(), name, length + 1) == length;
}

bool fromLocaleEncoding(const char* text, std::wstring& out) {
    const std::size_t length = std::mbstowcs(nullptr, text, 0);
    if (length == kNotExpressible)
        return false;
    out.resize(length);
    return std::mbstowcs(out.data(), text, length + 1) == length;
}

void fromUtf8(const char* text, std::wstring& out) {
    out.clear();
    while (*text != '\0') {
        char32_t character = kReplacementCharacter;
        const std::size_t length = decodeUtf8(text, character);
        out += static_cast<wchar_t>(character);
        text += length != 0 ? length : 1;
    }
}

} // namespace

bool toFileName(const wchar_t* name, std::string& out) {
    if (!isUnicode(name))
        return false;
    const int before = errno;
    if (!toLocaleEncoding(name, out))
        out = utf8Of(name);
    errno = before;
    return true;
}

int fileNameError(const wchar_t* name, std::string& out) noexcept {
    if (name == nullptr)
        return EINVAL;
    try {
        return toFileName(name, out) ? 0 : EILSEQ;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

bool toUtf8FileName(const wchar_t* name, std::string& out) {
    if (!isUnicode(name))
        return false;
    out = utf8Of(name);
    return true;
}

void fromSystemText(const char* text, std::wstring& out) {
    const int before = errno;
    if (!fromLocaleEncoding(text, out))
        fromUtf8(text, out);
    errno = before;
}

} // namespace tq::platform
