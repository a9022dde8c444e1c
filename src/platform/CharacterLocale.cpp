#include "platform/CharacterLocale.h"

#include <algorithm>
#include <clocale>
#include <iterator>
#include <string_view>

namespace tq::platform {

void useUtf8Characters() noexcept {
    // Each system knows one of them.
    constexpr const char* kNames[] = {"UTF-8", "C.UTF-8"};
    const char* current = std::setlocale(LC_CTYPE, nullptr);
    const auto isCurrent = [current](std::string_view name) { return current != nullptr && name == current; };
    // Asked first, because looking for a name that is not there takes a search through the file system.
    if (std::any_of(std::begin(kNames), std::end(kNames), isCurrent))
        return;
    for (const char* name : kNames) {
        if (std::setlocale(LC_CTYPE, name) != nullptr)
            return;
    }
}

} // namespace tq::platform
