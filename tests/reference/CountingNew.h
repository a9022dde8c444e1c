#pragma once

/// The global operator new of a test program, replaced by one that counts and can be made to fail. Link
/// CountingNew.cpp.
namespace counting_new {

/// Arrays from the global array new that are alive.
int liveArrays();
/// Blocks that are alive: arrays, single objects, and what another allocator counted with count().
int liveBlocks();
/// For an allocator that is to fail in turn with operator new: true when this allocation must fail.
bool mustFail();
/// Adds to the number of live blocks.
void count(int blocks);

/// Lets `count` more allocations succeed and the one after that throw std::bad_alloc; negative: none does.
void failAfter(int count);

} // namespace counting_new
