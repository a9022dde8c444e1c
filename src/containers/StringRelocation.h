#pragma once

#include "containers/StringPlacement.h"

#include <TqOsBase/containers/CStdStr.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

namespace tq::detail {

/// Whether a string may be moved to another address bytewise, the old one then being gone without its destructor. The
/// strings of libc++ may; those of libstdc++ point into themselves while they are short.
#if defined(_LIBCPP_VERSION)
inline constexpr bool kStringsMoveBytewise = true;
#else
inline constexpr bool kStringsMoveBytewise = false;
#endif

/// Moves `count` strings from one place to another, which may overlap. What lies at `to` and not at `from` holds no
/// live strings before; what lies at `from` and not at `to` holds none afterwards.
inline void relocate(CStdStr<wchar_t>* to, CStdStr<wchar_t>* from, std::size_t count) noexcept {
    const auto moveOne = [&](std::size_t i) {
        if (from[i].size() <= kShortText)
            placeString(&to[i], from[i]);
        else
            std::construct_at(&to[i], std::move(from[i]));
        std::destroy_at(&from[i]);
    };
    if (to == from || count == 0)
        return;
    if constexpr (kStringsMoveBytewise) {
        std::memmove(static_cast<void*>(to), static_cast<const void*>(from), count * sizeof *from);
    } else if (std::less<>()(to, from)) {
        for (std::size_t i = 0; i < count; ++i)
            moveOne(i);
    } else {
        for (std::size_t i = count; i > 0; --i)
            moveOne(i - 1);
    }
}

} // namespace tq::detail
