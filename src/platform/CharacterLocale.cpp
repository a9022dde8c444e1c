#include "platform/CharacterLocale.h"

#include "platform/ErrnoKeeper.h"

#include <algorithm>
#include <clocale>
#include <initializer_list>
#include <string_view>

namespace tq::platform {

namespace {

bool isCurrent(std::initializer_list<std::string_view> names) noexcept {
    const char* current = std::setlocale(LC_CTYPE, nullptr);
    return current != nullptr && std::find(names.begin(), names.end(), current) != names.end();
}

} // namespace

void useUtf8Characters() noexcept {
    const ErrnoKeeper keeper;
    // Each system knows one of them. Asked first, because looking for a name that is not there takes a search through
    // the file system.
    if (isCurrent({"UTF-8", "C.UTF-8"}))
        return;
    for (const char* name : {"UTF-8", "C.UTF-8"}) {
        if (std::setlocale(LC_CTYPE, name) != nullptr)
            return;
    }
}

bool isPlainLocale() noexcept {
    return isCurrent({"C", "POSIX"});
}

} // namespace tq::platform
