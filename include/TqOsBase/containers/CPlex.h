#pragma once

/// \file
/// Blocks of storage for the nodes of lists and maps.

#include <TqOsBase/Export.h>

#include <cstddef>

/// A block of storage for many nodes of equal size, chained to the blocks made before it. The nodes follow the header
/// in one allocation of the global array new; their lifetimes are the caller's affair.
struct TQ_API CPlex {
    CPlex* pNext; ///< The block made before this one.

    /// A new block for `count` elements of `elementSize` bytes, put in front of `head`. Null, and nothing done, when
    /// either number is 0. Throws std::bad_alloc, also for a size that cannot be expressed.
    static CPlex* Create(CPlex*& head, std::size_t count, std::size_t elementSize);

    /// The first element, aligned for any type that needs no more than pointer alignment.
    void* data() noexcept { return this + 1; }

    /// Frees this block and every block after it.
    void FreeDataChain();
};
