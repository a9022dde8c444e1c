#pragma once

/// \file
/// Copying of a record, for the stream buffers.

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

/// memmove, with the sizes of the usual records as single moves; pointers may be null when n is 0.
inline void moveBytes(unsigned char* to, const unsigned char* from, std::size_t n) noexcept {
    assert(n == 0 || (to != nullptr && from != nullptr));
    if (n == 8) {
        std::uint64_t value = 0;
        std::memcpy(&value, from, sizeof value);
        std::memcpy(to, &value, sizeof value);
    } else if (n == 4) {
        std::uint32_t value = 0;
        std::memcpy(&value, from, sizeof value);
        std::memcpy(to, &value, sizeof value);
    } else if (n == 2) {
        std::uint16_t value = 0;
        std::memcpy(&value, from, sizeof value);
        std::memcpy(to, &value, sizeof value);
    } else if (n == 1) {
        *to = *from;
    } else if (n != 0) {
        std::memmove(to, from, n);
    }
}

} // namespace tq::detail
