#pragma once

#include <TqOsBase/containers/TqVector.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tq::detail {

/// Keeps the record of a vector alive while bytes that may lie in it are written to that same vector: a copy of `out`
/// when `source` is among its slots, nothing otherwise, so that it is then written, or grown, in place. (Not an empty
/// vector, which would cost two atomic operations.)
template <class Vector>
std::optional<Vector> recordWith(const Vector& out, const void* source) {
    const auto first = reinterpret_cast<std::uintptr_t>(out.asArrayPtr());
    const std::uintptr_t bytes = static_cast<std::size_t>(out.physicalLength()) * sizeof(out[0]);
    if (reinterpret_cast<std::uintptr_t>(source) - first < bytes)
        return out;
    return std::nullopt;
}

} // namespace tq::detail
