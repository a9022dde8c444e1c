#pragma once

#include "format/ArgumentSource.h"
#include "format/ScanSource.h"

#include <cstdint>

namespace tq::detail {

enum class StoreSize : std::uint8_t { kShort, kInt, kLong };

/// How an integer field is read and stored.
struct IntegerField {
    unsigned base;      ///< 0: as the prefix says
    bool isUnsigned;    ///< takes no sign, is stored unsigned
    bool wrapsNegative; ///< the letter's digits are those of bits: the range reaches to the unsigned limit
    StoreSize store;
};

} // namespace tq::detail

// Each reads one field of at most `width` characters at the look-ahead and, when `assign` says so, stores it through
// the next pointer of `arguments` and counts it in `assigned`. True ends the scan: the field had no character that
// fits.

/// A number beyond the stored type is stored as the type's limit.
bool scanfIntegerFromBuf(const tq::detail::IntegerField& field, unsigned width, ScanfSourceBuf& source, bool assign,
                         tq::platform::ArgumentCursor& arguments, int& assigned);

/// A double, or with `isDouble` false a float.
bool scanfDoubleFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, bool isDouble,
                        tq::platform::ArgumentCursor& arguments, int& assigned);

/// Characters up to white space, stored with a terminating 0.
bool scanfStringFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, tq::platform::ArgumentCursor& arguments,
                        int& assigned);

/// `width` characters of any kind, stored without a terminator. Fewer are left when the source ends first: that ends
/// the scan too, though what was read counts as assigned.
bool scanfCharFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, tq::platform::ArgumentCursor& arguments,
                      int& assigned);
