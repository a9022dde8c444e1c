#pragma once

#include <functional>
#include <gtest/gtest.h>

/// Calls of the system and of the allocation functions that the linker has led here, so that they can be made to fail.
/// The library's code is the shipped one; only this test program is linked so.
namespace faults {

/// mprotect, called from the library, fails while this is set.
void failProtection(bool fails);
/// malloc, called from outside the C library, gives null while this is set.
void failMalloc(bool fails);

/// mmap, called from the library, fails while this is set.
void failMapping(bool fails);

enum class Call { kRead, kWrite, kMove, kClose };

enum class Fault {
    kInterrupted, ///< The call fails with EINTR, the next one works.
    kShort,       ///< A read brings one byte. A write stores half of its bytes, and from there on the disk is full.
    kBroken,      ///< The call and all of its kind that follow fail with EIO.
};

/// Streams that the library opens while this lives do their input and output on the file through functions that count
/// the calls of one kind and go wrong at number `nth`, from 0. One at a time.
class FaultyStreams {
public:
    FaultyStreams(Call call, Fault fault, int nth);
    FaultyStreams(const FaultyStreams&) = delete;
    FaultyStreams& operator=(const FaultyStreams&) = delete;
    ~FaultyStreams();
    bool wasMet() const;
};

/// Does `change` with allocation number `failing`, from 0, failing: of the global new, tqMalloc, tqAllocate and
/// tqRealloc together. True when it threw std::bad_alloc.
bool runsOut(int failing, const std::function<void()>& change);

/// Calls `attempt` with 0, 1, 2 and so on until it returns true: the allocation of that number was not reached any
/// more. Nothing may be left allocated by any of the calls. Returns the number of those that returned false.
int sweepAllocations(const std::function<bool(int failing)>& attempt);

} // namespace faults
