#pragma once

#include <TqOsBase/containers/CStdStr.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <string_view>

namespace tq::detail {

/// The longest text that the strings of the supported libraries keep in themselves.
inline constexpr std::size_t kShortText = 3;

/// Makes a string at `place`, which holds none. Throws std::bad_alloc, not where the text is short.
inline void placeString(CStdStr<wchar_t>* place, std::wstring_view text) {
    // An iterator that is no pointer makes the string copy the characters itself: for so few of them a call of wmemcpy
    // costs more than all the rest.
    using Character = std::move_iterator<const wchar_t*>;
    if (text.size() <= kShortText)
        std::construct_at(place, Character(text.data()), Character(text.data() + text.size()));
    else
        std::construct_at(place, text);
}

} // namespace tq::detail
