#pragma once

#include <functional>

/// The global operator new of a test program, replaced by one that counts and can be made to fail. Link
/// CountingNew.cpp.
namespace counting_new {

/// Blocks that are alive: arrays, single objects, and what another allocator counted with count().
int liveBlocks();
/// For an allocator that is to fail in turn with operator new: true when this allocation must fail.
bool mustFail();
/// Adds to the number of live blocks.
void count(int blocks);

/// Lets `count` more allocations succeed and the one after that throw std::bad_alloc; negative: none does.
void failAfter(int count);
/// Does `change` with allocation number `failing`, from 0, failing. True when it threw std::bad_alloc.
bool runsOut(int failing, const std::function<void()>& change);
/// Calls `attempt` with 0, 1, 2 and so on until it returns true: the allocation of that number was not reached any
/// more. Nothing may be left allocated by any of the calls, and at least the first must return false.
void sweepAllocations(const std::function<bool(int failing)>& attempt);

} // namespace counting_new
