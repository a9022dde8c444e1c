#pragma once

#include "memory/TqHeap.h"

#include <string>

namespace tq::detail {

/// Walks the whole heap and verifies every invariant that HeapLayout.h states, touching nothing. Returns a description
/// of the first violation, or an empty text. Takes time in proportion to the pages and free units of the heap.
std::string checkHeap(const GlobalHeap& heap);

} // namespace tq::detail
