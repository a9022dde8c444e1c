#pragma once

#include "codepage/CharacterSteps.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

/// The characters that utf8ToWide gives of these bytes: as many as there are bytes, without those that belong to the
/// character of one before them. Part of its caller, so that it is compiled for the processors that the caller is for.
[[gnu::always_inline]] inline std::size_t countUtf8Characters(const char* src, std::size_t count) noexcept {
    constexpr std::size_t kStretch = 240; // as many as a byte can count
    std::size_t characters = count;
    if (count > 1 && isContinuation(src[1]) && byteOf(src[0]) >= 0xC0)
        --characters;
    for (std::size_t i = 2; i < count;) {
        std::uint8_t taken = 0; // Counting in bytes the compiler works on sixteen and more at a time.
        for (const std::size_t end = std::min(count, i + kStretch); i < end; ++i) {
            // Numbers, which are combined without branches.
            const unsigned isOfLead = byteOf(src[i - 1]) >= 0xC0 ? 1 : 0;
            const unsigned isThird = (byteOf(src[i - 2]) >= 0xE0 ? 1U : 0U) & (isContinuation(src[i - 1]) ? 1U : 0U);
            taken = static_cast<std::uint8_t>(taken + ((isContinuation(src[i]) ? 1U : 0U) & (isOfLead | isThird)));
        }
        characters -= taken;
    }
    return characters;
}

/// The same, for every processor of the build.
inline std::size_t utf8ToWideSize(const char* src, std::size_t count) noexcept {
    return countUtf8Characters(src, count);
}

} // namespace tq::detail
