#pragma once

#include <TqOsBase/stream/TqStreamBuf.h>

#include <cstdint>

namespace tq::detail {

/// Does `action`, then puts the position back to `before`. When the action fails its failure is the one that is
/// reported, whatever becomes of the position.
template <class Action>
void thenReturnTo(TqStreamBuf& stream, std::uint64_t before, const Action& action) {
    try {
        action();
    } catch (...) {
        try {
            stream.seek(before, TqIO::kSeekStart);
        } catch (...) { // NOLINT(bugprone-empty-catch): the first failure is the cause
        }
        throw;
    }
    stream.seek(before, TqIO::kSeekStart);
}

} // namespace tq::detail
