#pragma once

#include <TqOsBase/containers/TqVector.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>

namespace tq::detail {

/// Keeps the record of a vector alive while bytes that may lie in it are written to that same vector: a copy of `out`
/// when `source` is among its slots, nothing otherwise, so that it is then written, or grown, in place. (Not an empty
/// vector, which would cost two atomic operations.)
template <class T>
std::optional<TqVector<T>> recordWith(const TqVector<T>& out, const void* source) {
    const auto first = reinterpret_cast<std::uintptr_t>(out.asArrayPtr());
    const std::uintptr_t bytes = static_cast<std::size_t>(out.physicalLength()) * sizeof(T);
    if (reinterpret_cast<std::uintptr_t>(source) - first < bytes)
        return out;
    return std::nullopt;
}

/// Makes the logical length `length` and returns the elements for writing. Throws std::length_error beyond INT_MAX.
template <class T>
T* resize(TqVector<T>& out, std::size_t length) {
    if (length > INT_MAX)
        throw std::length_error("text conversion: too many characters");
    out.setLogicalLength(static_cast<int>(length));
    return out.asArrayPtr();
}

/// Ends the text that was written up to `end` and makes it the last of the vector.
template <class T>
void terminate(TqVector<T>& out, const T* elements, T* end) {
    *end = 0;
    out.setLogicalLength(static_cast<int>(end - elements) + 1);
}

} // namespace tq::detail
