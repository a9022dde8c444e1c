#pragma once

/// \file
/// The digits of a double, shortest or as many as asked for, and big integers.

#include <TqOsBase/Export.h>
#include <TqOsBase/diag/TqLock.h>

#include <cstdint>

/// A non-negative integer of any size. A block of size class k holds 2^k words and takes 32 + 4 * (2^k - 1) bytes,
/// rounded up to a multiple of 8.
struct Bigint {
    Bigint* next;           ///< Only for a block on a free list, and in the cache of powers of five.
    std::int32_t k;         ///< Size class.
    std::int32_t capacity;  ///< Words that the block holds: 2^k.
    std::int32_t sign;      ///< 0, or 1 where `diff` says so.
    std::int32_t used;      ///< Significant words; the highest is not 0, but for the number 0, which has one word.
    std::uint32_t words[1]; ///< Least significant first; `capacity` of them.
};

/// Where the blocks of the big integers and the digit strings come from: a pool of its own, then one free list per size
/// class, then tqMalloc. There is one, built when the library is loaded; see tqFCvtAllocator.
///
/// Any thread may convert. Pool and free lists belong to one of them, the first to take a block, until it ends; the
/// others' blocks come from tqMalloc, and a block of the pool that they free returns to its list later. Any thread may
/// free any block. The lock is never taken by the library; it is the lock of this library, which does nothing.
///
/// It may be used before main and after it. At exit the pool's cursor and the cache of powers of five become null; what
/// is converted after that takes its fresh blocks from tqMalloc.
struct TqFCvtAllocator {
    static constexpr int kPoolBytes = 3944; ///< Size of the pool.
    static constexpr int kSizeClasses = 16; ///< Size classes with a free list: 0 to 15.

    union {
        TqLock* m_pNoLock; ///< Until the allocator is built.
        TqLocker m_locker; ///< From then on.
    };
    std::uint64_t m_pool[kPoolBytes / 8]; ///< Blocks are cut from it in order.
    unsigned char* m_cursor;              ///< First byte of the pool that was never used.
    Bigint* m_freeLists[kSizeClasses];    ///< Blocks of the pool only; those of tqMalloc go back to it.

    constexpr TqFCvtAllocator() noexcept : m_pNoLock(nullptr), m_pool{}, m_cursor(nullptr), m_freeLists{} {}
    TqFCvtAllocator(const TqFCvtAllocator&) = delete;
    TqFCvtAllocator& operator=(const TqFCvtAllocator&) = delete;
};

/// The one allocator.
TQ_API TqFCvtAllocator* tqFCvtAllocator();

/// The cache of powers of five: 5^4, 5^8, 5^16 ... 5^256, each linked to the next, the last to null. Its entries are
/// never freed. Null after exit.
extern TQ_API Bigint* G_Pow5Data;

/// Correctly rounded digits of doubles, and an arithmetic of big integers.
///
/// Blocks. Every `Bigint*` that is returned belongs to the caller, who gives it to Bfree or to a function that consumes
/// it. "Consumes" means that the argument must not be used again, not even when the function throws. Operands are
/// otherwise left alone. Where memory ends std::bad_alloc is thrown.
///
/// Any thread may call anything here (see TqFCvtAllocator). Nothing depends on the locale.
class TQ_API TqGdImpl {
public:
    /// A block of size class `k`, 0 to 30, with sign and used 0. Classes above 15 never enter a free list.
    static Bigint* Balloc(int k);
    /// Frees a block: one of the pool goes to the free list of its class, any other to tqFree. Null is ignored.
    static void Bfree(Bigint* b);

    /// Shifts *x right by the number of its trailing zero bits and returns that; 32, and nothing is shifted, for 0.
    static int lo0bits(unsigned* x);
    /// Number of leading zero bits; 32 for 0.
    static int hi0bits(unsigned x);

    /// b * m + a, for m and a of 0 or more; consumes `b`. The block grows to class k + 1 where the carry asks for it.
    static Bigint* multadd(Bigint* b, int m, int a);
    /// A number of one word.
    static Bigint* i2b(int i);
    /// a * b.
    static Bigint* mult(Bigint* a, Bigint* b);
    /// b * 5^k; consumes `b`. Powers beyond the cache (k above 511) are computed.
    static Bigint* pow5mult(Bigint* b, int k);
    /// b * 2^k; consumes `b`.
    static Bigint* lshift(Bigint* b, int k);
    /// Negative, 0 or positive as a is less than, equal to or greater than b; signs are not looked at.
    static int cmp(Bigint* a, Bigint* b);
    /// |a - b|, with the sign 1 when a < b.
    static Bigint* diff(Bigint* a, Bigint* b);

    /// The distance from `x` to the next double away from 0, of its magnitude; 2^-1074 for a subnormal and for 0.
    static double ulp(double x);
    /// The leading 53 bits as a double of 1 or more and below 2 (what follows is cut off); *e gets the number of
    /// leading zero bits of the highest word.
    static double b2d(Bigint* a, int* e);
    /// The odd part of the significand of a finite `d`, whose sign is ignored: |d| = result * 2^*e, and *bits is the
    /// number of its bits. Zero gives 0 with *bits 0.
    static Bigint* d2b(double d, int* e, int* bits);
    /// The number that the first `nd` digits at `s` make. `nd0` of them, if fewer, stand before a decimal point, which
    /// is skipped as one character; `y9` is the value of the first nine (of all, when there are fewer), and those are
    /// not read again.
    static Bigint* s2b(const char* s, int nd0, int nd, unsigned y9);
    static Bigint* s2b(const wchar_t* s, int nd0, int nd, unsigned y9);
    /// a / b, of the leading 53 bits of both; b is not 0.
    static double ratio(Bigint* a, Bigint* b);

    /// Writes the low `n` bits of `b`, rounded up to whole words, to `c`, with zeros where b has fewer. Returns the
    /// number of words written.
    static int copybits(unsigned* c, int n, Bigint* b);
    /// 1 when any of the low `k` bits is set, else 0.
    static int any_on(Bigint* b, int k);
    /// The digit floor(b / S), which must be below 10; `b` becomes b - digit * S, in place.
    static int quorem(Bigint* b, Bigint* S);

    /// Copies `b` with its terminator to `a` and returns the address of the terminator in `a`.
    static char* strcp(char* a, const char* b);
    /// A buffer for a digit string of `i` characters and a terminator, in a block that freedtoa releases. The first
    /// four bytes of the block hold its class, the characters follow.
    static char* rv_alloc(int i);
    /// A digit string that holds a copy of `s`, in a buffer for `n` characters, or for all of `s` when that is more;
    /// *rve, unless `rve` is null, gets the address of its terminator.
    static char* nrv_alloc(char* s, char** rve, int n);
    /// Releases a digit string of dtoa, rv_alloc or nrv_alloc. Null is ignored.
    static void freedtoa(char* s);

    /// The decimal digits of `d`, correctly rounded (ties to even), without trailing zeros, released with freedtoa:
    ///   |d| ~ 0.d1d2d3... * 10^*decpt
    /// Modes: 0 and 1 the shortest digits that read back to `d`, of several the closest; 2 at most max(1, ndigits)
    /// digits; 3 digits up to `ndigits` places after the decimal point, which may be negative; 4 and 5 as 2 and 3, but
    /// the shortest digits where those are fewer; 6 to 9 are 2 to 5; any other mode is 0.
    /// *sign gets 1 when the sign bit is set, also for -0 and for a NaN, else 0. *rve, unless `rve` is null, gets the
    /// address of the terminator. Zero is "0" with *decpt 1. In modes 3 and 5 a number that rounds to nothing is the
    /// empty string with *decpt -ndigits. Deliberately, infinity and NaN are the texts "Infinity" and "NaN" with *decpt
    /// 9999.
    static char* dtoa(double d, int mode, int ndigits, int* decpt, int* sign, char** rve);

    /// Builds the cache of powers of five. Done when the library is loaded; another call does nothing.
    static void initPow5Data();
};
