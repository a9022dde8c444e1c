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
    bool wrapsNegative; ///< for octal, hexadecimal and binary letters: positive numbers up to the unsigned limit fit
    StoreSize store;
};

} // namespace tq::detail

// Each reads one field of at most `width` characters from the look-ahead on. With `assign` it is stored through the
// next pointer of `arguments` and counted in `assigned`. The result is true when the scan is to end, because the field
// had no character that fits.

/// A number beyond the stored type is stored as the type's limit.
bool scanfIntegerFromBuf(const tq::detail::IntegerField& field, unsigned width, ScanfSourceBuf& source, bool assign,
                         tq::detail::ArgumentCursor& arguments, int& assigned);

/// A double, or with `isDouble` false a float.
bool scanfDoubleFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, bool isDouble,
                        tq::detail::ArgumentCursor& arguments, int& assigned);

/// Characters up to white space, stored with a terminating 0.
bool scanfStringFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, tq::detail::ArgumentCursor& arguments,
                        int& assigned);

/// `width` characters of any kind, stored without a terminator. When the source ends before, the scan ends too; what
/// was read counts as assigned.
bool scanfCharFromBuf(unsigned width, ScanfSourceBuf& source, bool assign, tq::detail::ArgumentCursor& arguments,
                      int& assigned);
