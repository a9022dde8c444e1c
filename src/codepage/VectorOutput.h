#pragma once

#include "containers/RecordKeeping.h"

#include <TqOsBase/containers/TqVector.h>

#include <climits>
#include <cstddef>
#include <stdexcept>

namespace tq::detail {

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
