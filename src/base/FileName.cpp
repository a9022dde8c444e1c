#include "base/FileName.h"

#include "base/CharacterClass.h"
#include "base/LocaleText.h"
#include "base/Utf8.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <utility>

namespace tq::detail {

namespace {

// Asked first, because a C library may encode more than Unicode has: longer forms of UTF-8 that name no character.
bool isUnicode(std::wstring_view name) {
    constexpr std::uint32_t kLastCharacter = 0x10FFFF;
    return std::all_of(name.begin(), name.end(), [](wchar_t c) { return codeOf(c) <= kLastCharacter; });
}

// False when a byte fits no character; U+FFFD stands for it then.
bool fromUtf8(const char* text, std::wstring& out) {
    bool isValid = true;
    out.clear();
    while (*text != '\0') {
        char32_t character = kReplacementCharacter;
        const std::size_t length = decodeUtf8(text, character);
        isValid = isValid && length != 0;
        out += static_cast<wchar_t>(character);
        text += std::max<std::size_t>(length, 1);
    }
    return isValid;
}

template <class Convert>
int errorOf(Convert convert, const wchar_t* name, std::string& out) noexcept {
    if (name == nullptr)
        return EINVAL;
    try {
        return convert(name, out) ? 0 : EILSEQ;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

} // namespace

bool toFileName(const wchar_t* name, std::string& out) {
    assert(name != nullptr);
    const std::wstring_view characters = name;
    if (!isUnicode(characters))
        return false;
    if (std::all_of(characters.begin(), characters.end(), isAscii) || !toLocaleText(name, out))
        out = utf8Of(name);
    return true;
}

int fileNameError(const wchar_t* name, std::string& out) noexcept {
    return errorOf(toFileName, name, out);
}

bool toUtf8FileName(const wchar_t* name, std::string& out) {
    assert(name != nullptr);
    if (!isUnicode(name))
        return false;
    out = utf8Of(name);
    return true;
}

int utf8FileNameError(const wchar_t* name, std::string& out) noexcept {
    return errorOf(toUtf8FileName, name, out);
}

void fromSystemText(const char* text, std::wstring& out) {
    assert(text != nullptr);
    if (!fromUtf8(text, out)) { // "caf\xE9", an e with an acute accent in a Latin-1 locale
        std::wstring inLocale;
        if (fromLocaleText(text, inLocale))
            out = std::move(inLocale);
    }
}

} // namespace tq::detail
