#pragma once

/// Calls of the system and of the allocation functions that the linker has led here, so that they can be made to fail.
/// The library's code is the shipped one; only this test program is linked so.
namespace faults {

inline bool g_failsProtection = false; ///< mprotect, called from the library
inline bool g_failsMapping = false;    ///< mmap, called from the library
inline bool g_failsMalloc = false;     ///< malloc, called from outside the C library

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

} // namespace faults
