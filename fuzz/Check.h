#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the process with `property` on standard error when it does not hold; both fuzzer and replay see the abort.
inline void check(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "property violated: %s\n", property);
        std::abort();
    }
}

} // namespace fuzz
