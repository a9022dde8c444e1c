#pragma once

#include <TqOsBase/Export.h>

#include <cstddef>

/// \file
/// The allocation functions: one global heap of pooled blocks over 8 GiB of reserved address space, in front of the C
/// library's heap.
///
/// Pools serve requests of up to 256 bytes (rounded up to a multiple of 8, from 208 on to 208, 224, 240 or 256) and
/// those that lie close under a larger unit: 500 to 512, 1000 to 1024, 2000 to 2048 and 4000 to 4096 bytes. All other
/// sizes, deliberately also those between, are passed to the C library's malloc, and every block that is not the
/// heap's own (null included) to its free and realloc: blocks of both kinds, and units of whole pages, may be given to
/// any function here that takes a block.
///
/// Blocks of the pools are aligned to 8 bytes, to 16 where the unit is a multiple of 16; units of pages are aligned to
/// 4096; malloc's blocks as malloc aligns. When the address space cannot be reserved, the C library serves every
/// request.
///
/// Any thread may call everything here, with any block that no other thread uses at that moment; nothing takes a lock.
/// The heap belongs to one thread, the first that allocates, until it ends, and then to the next that does. Every other
/// thread gets a heap of its own, as long as 32 suffice; the next thread takes it over when it ends. Further threads
/// are served by the C library, and so are those whose own heap is full. A block or a unit of pages that another thread
/// frees is put on a list of its heap, which the owner takes in before it takes another page; it can be used again from
/// then on. A child after fork() has the heap of the thread that called fork() and those that no thread owned; freeing
/// blocks of the others has no effect in it, and a thread that has no heap is served by the C library if the first heap
/// is among them.
///
/// The functions may be called before main and after it: static objects that are destroyed after the heap may still use
/// and free their blocks (that then has no effect) and allocate (from malloc then).
///
/// A block freed twice, or an address that no call returned, is an error of the caller. The heap notices it only where
/// the address lies in a part of its address space that is not in use: freeing does nothing then (builds with
/// assertions stop), reallocating returns null, and the size is 0.

extern "C" {

/// A block of at least `size` bytes, uninitialised; 0 counts as 1 and gives a block of 8. Null when there is no memory,
/// and for any size above 0x80000000 (2 GiB).
TQ_API void* tqMalloc(std::size_t size);

/// As tqMalloc, without the limit of 2 GiB.
TQ_API void* tqAllocate(std::size_t size);

/// A block of `size` bytes with the contents of `block` up to the smaller size; `block` is freed. A pool's block or a
/// unit of pages is always moved, also when it has room; a foreign block goes to the C library's realloc, and so does
/// null, so that even a small new block is malloc's then. With `size` 0 it returns `block` itself, which stays valid
/// and is not freed. Null when there is no memory: `block` is untouched then. There is no limit of 2 GiB.
TQ_API void* tqRealloc(void* block, std::size_t size);

/// As tqRealloc, but `size` 0 is passed on: a pool's block is freed and a fresh one of 8 bytes returned, with the first
/// byte kept; for a foreign block it is the C library's realloc(block, 0), which on Linux frees it and returns null.
TQ_API void* tqReallocate(void* block, std::size_t size);

/// Frees a block of any of these functions, a unit of pages or a block of malloc. Null is ignored.
TQ_API void tqFree(void* block);

/// As tqFree.
TQ_API void tqDeallocate(void* block);

/// The bytes that `block` has room for: the unit of its pool, the whole unit of pages, or for a block of malloc its
/// usable size. 0 for null.
TQ_API std::size_t tqMsize(void* block);

/// As tqMsize.
TQ_API std::size_t tqAllocSizeOf(void* block);

/// A copy of a wide text with its terminator, freed with tqStrdupFree or tqFree. Null for null, for a text of more than
/// 2 GiB, and when there is no memory.
TQ_API wchar_t* tqStrdup(const wchar_t* text);

/// Frees a copy made by tqStrdup; null is ignored.
TQ_API void tqStrdupFree(wchar_t* text);

/// @{
/// The interface of a debug allocator. The allocating forms deliberately allocate nothing: they return null whatever
/// their arguments, and a block given to them stays valid. The others do what their plain forms do.
TQ_API void* tqMallocDbg(std::size_t size);
TQ_API void* tqAllocateDbg(std::size_t size);
TQ_API void* tqReallocDbg(void* block, std::size_t size);
TQ_API void* tqReallocateDbg(void* block, std::size_t size);
TQ_API void tqFreeDbg(void* block);
TQ_API void tqDeallocateDbg(void* block);
TQ_API std::size_t tqMsizeDbg(void* block);
TQ_API std::size_t tqAllocSizeOfDbg(void* block);
/// @}

/// One unit of 1 MiB, aligned to 1 MiB. Null when there is no memory.
TQ_API void* tqAllocPage();

/// Frees a unit of pages, or a block of malloc (null included). A pool's block is left alone: it is not freed here.
TQ_API void tqFreePage(void* unit);

/// A unit of `size` bytes when that is a multiple of 4096 up to 1 MiB: whole pages, aligned to 4096. Any other size is
/// served by malloc (0 counts as 1). Null when there is no memory. What a unit holds at first is undefined.
TQ_API void* tqAllocPageHeap(std::size_t size);

/// As tqFreePage.
TQ_API void tqFreePageHeap(void* unit);

/// Gives the free memory that waits for its next use back to the system. At most 4 MiB wait, or half of what the pools
/// have in use when that is more, and never more than 64 MiB; the pages that each segment keeps in reserve are not
/// among them. That is the caller's heap and those that no thread owns; to each other thread it leaves a note, which it
/// follows when one of its pools next has no block at hand.
TQ_API void tqHeapTrim();

} // extern "C"
