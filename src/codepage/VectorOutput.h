#pragma once

#include <TqOsBase/containers/TqVector.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace tq::detail {

/// A vector's record kept alive while text that may lie in it is converted into that vector. Holds nothing when the
/// text lies elsewhere, so that the vector is then written in place.
template <class T>
class SourceKeeper {
public:
    SourceKeeper(const TqVector<T>& out, const void* src) {
        const auto first = reinterpret_cast<std::uintptr_t>(out.asArrayPtr());
        const std::uintptr_t bytes = static_cast<std::size_t>(out.physicalLength()) * sizeof(T);
        if (reinterpret_cast<std::uintptr_t>(src) - first < bytes)
            m_record = out;
    }

private:
    TqVector<T> m_record;
};

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
