#include "base/Utf8.h"

#include <TqOsBase/stream/WideName.h>

#include <cstddef>
#include <stdexcept>

using namespace tq;

std::wstring tq::wideName(std::string_view utf8) {
    const std::string terminated(utf8); // the decoder looks for the terminator
    std::wstring name;
    for (std::size_t at = 0; at < terminated.size();) {
        char32_t character = 0;
        const std::size_t length = detail::decodeUtf8(terminated.c_str() + at, character);
        if (length == 0 || character == 0)
            throw std::invalid_argument("a name that is not UTF-8");
        name += static_cast<wchar_t>(character);
        at += length;
    }
    return name;
}

std::string tq::utf8Name(std::wstring_view name) {
    std::string utf8;
    for (const wchar_t c : name) {
        const auto character = static_cast<char32_t>(c);
        char sequence[detail::kMaxUtf8Length];
        const std::size_t length = detail::encodeUtf8(character, sequence);
        if (length == 0 || character == 0 || detail::isSurrogate(character))
            throw std::invalid_argument("a name with a character that has no UTF-8");
        utf8.append(sequence, length);
    }
    return utf8;
}
