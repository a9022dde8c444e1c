#pragma once

#include <TqOsBase/containers/TqVector.h>

#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// A vector's record kept alive while bytes that may lie in it are written to that same vector. Holds nothing when they
/// lie elsewhere, so that the vector is then written, or grown, in place.
template <class Vector>
class SourceKeeper {
public:
    SourceKeeper(const Vector& out, const void* source) {
        const auto first = reinterpret_cast<std::uintptr_t>(out.asArrayPtr());
        const std::uintptr_t bytes = static_cast<std::size_t>(out.physicalLength()) * sizeof(out[0]);
        if (reinterpret_cast<std::uintptr_t>(source) - first < bytes)
            m_record = out;
    }

private:
    Vector m_record;
};

} // namespace tq::detail
