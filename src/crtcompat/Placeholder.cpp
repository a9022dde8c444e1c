#include "crtcompat/Placeholder.h"

#include "base/StandardStreams.h"

#include <cstdio>
#include <exception>

namespace tq::detail {

void endProcess(const char* function) noexcept {
    char message[128];
    std::snprintf(message, sizeof message, "TqOsBase: %s was called, which this system does not have\n", function);
    detail::writeToStandardError(message);
    std::terminate();
}

} // namespace tq::detail
