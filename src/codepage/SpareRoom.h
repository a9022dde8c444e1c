#pragma once

#include "codepage/TextKernels.h"

#include <TqOsBase/containers/TqVector.h>

#include <cstddef>

namespace tq::detail {

/// Converts the text, or the beginning of it that fits, into room that the vector has after its elements: that needs no
/// measuring, and changes nothing that the vector counts. One byte is left for a terminator.
inline TextProgress fillSpareRoom(TextKernels::Unmeasured convert, const wchar_t* src, std::size_t limit,
                                  TqVector<char>& out) {
    const int earlier = out.logicalLength();
    const int spare = out.physicalLength() - earlier - 1;
    char* const elements = out.setLogicalLengthAtHand(earlier);
    if (spare <= 0 || elements == nullptr || convert == nullptr)
        return {};
    return convert(src, limit, elements + earlier, static_cast<std::size_t>(spare));
}

/// Makes what fillSpareRoom wrote, and a terminator, elements of the vector.
inline void keepWithTerminator(std::size_t written, TqVector<char>& out) {
    const int length = out.logicalLength() + static_cast<int>(written);
    out.setLogicalLengthAtHand(length + 1)[length] = 0;
}

/// Appends a text that is short and plain, by the kernel for such texts, with its terminator where the vector has room
/// for it. False, and nothing changes, otherwise.
template <class From, class To>
bool appendShort(std::size_t (*convert)(const From*, std::size_t, To*, std::size_t) noexcept, const From* src,
                 std::size_t limit, TqVector<To>& out) {
    const int earlier = out.logicalLength();
    const int spare = out.physicalLength() - earlier - 1;
    To* const elements = out.setLogicalLengthAtHand(earlier);
    if (spare <= 0 || elements == nullptr || convert == nullptr)
        return false;
    To* const text = elements + earlier;
    const std::size_t length = convert(src, limit, text, static_cast<std::size_t>(spare));
    if (length == kNotShort)
        return false;
    text[length] = 0;
    out.setLogicalLengthAtHand(earlier + static_cast<int>(length) + 1);
    return true;
}

} // namespace tq::detail
