#pragma once

/// \file
/// Copying of a record, for the stream buffers.

#include <cassert>
#include <cstddef>
#include <cstring>

namespace tq::detail {

/// memmove, with the sizes of the usual records as single moves; pointers may be null when n is 0.
inline void moveBytes(unsigned char* to, const unsigned char* from, std::size_t n) noexcept {
    assert(n == 0 || (to != nullptr && from != nullptr));
    switch (n) { // compilers make single moves of constant sizes
    case 0:
        break;
    case 1:
        *to = *from;
        break;
    case 2:
        std::memmove(to, from, 2);
        break;
    case 4:
        std::memmove(to, from, 4);
        break;
    case 8:
        std::memmove(to, from, 8);
        break;
    default:
        std::memmove(to, from, n);
    }
}

} // namespace tq::detail
