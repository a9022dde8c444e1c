#pragma once

/// The global operator new of a test program, replaced by one that counts and can be made to fail. Link
/// CountingNew.cpp.
namespace counting_new {

/// Arrays from the global array new that are alive.
int liveArrays();

/// Lets `count` more allocations succeed and the one after that throw std::bad_alloc; negative: none does.
void failAfter(int count);

} // namespace counting_new
