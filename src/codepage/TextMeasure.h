#pragma once

#include <algorithm>
#include <cstddef>
#include <cwchar>

namespace tq::detail {

struct TextMeasure {
    std::size_t count; ///< Characters before the first 0, at most the limit.
    std::size_t size;  ///< Bytes that they become.
};

/// Finds the end of a text and the size of its converted form, a stretch at a time: the second look at each stretch
/// finds it in the processor's nearest cache.
template <class SizeOf>
TextMeasure measure(const wchar_t* src, std::size_t limit, SizeOf sizeOf) {
    constexpr std::size_t kStretch = 2048;
    TextMeasure text{0, 0};
    while (text.count < limit) {
        const std::size_t wanted = std::min(kStretch, limit - text.count);
        const std::size_t found = ::wcsnlen(src + text.count, wanted);
        text.size += sizeOf(src + text.count, found);
        text.count += found;
        if (found < wanted)
            break;
    }
    return text;
}

} // namespace tq::detail
