#pragma once

#include "containers/RecordKeeping.h"

#include <TqOsBase/containers/TqVector.h>

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstddef>
#include <new>
#include <stdexcept>

namespace tq::detail {

/// Makes the logical length `length` and returns the elements for writing. A vector that holds elements and has no room
/// for so many gets at least twice the slots it has, so that appending many texts takes time in proportion to their
/// length. Throws std::length_error beyond INT_MAX.
template <class T>
T* resize(TqVector<T>& out, std::size_t length) {
    if (length > INT_MAX)
        throw std::length_error("text conversion: too many characters");
    const int wanted = static_cast<int>(length);
    const int slots = out.physicalLength();
    if (wanted > slots && !out.isEmpty())
        out.setPhysicalLength(std::max(wanted, static_cast<int>(std::min<long long>(2LL * slots, INT_MAX))));
    out.setLogicalLength(wanted);
    return out.asArrayPtr();
}

/// Ends the text that was written up to `end` and makes it the last of the vector. If its room was made for it (the
/// vector had `slotsBefore` slots) and is more than twice what is needed, as after a text full of escapes, the rest is
/// given back.
template <class T>
void terminate(TqVector<T>& out, const T* elements, T* end, int slotsBefore) {
    assert(end >= elements && end - elements < out.physicalLength());
    *end = 0;
    const int length = static_cast<int>(end - elements) + 1;
    out.setLogicalLength(length);
    const int slots = out.physicalLength();
    if (slots == slotsBefore || slots - length <= length)
        return;
    try {
        out.setPhysicalLength(length);
    } catch (const std::bad_alloc&) {
        return; // no memory for the smaller slots: the text is whole where it is
    }
    out.setLogicalLength(length);
}

} // namespace tq::detail
