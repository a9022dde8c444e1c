#include "platform/CharacterLocale.h"

#include "platform/ErrnoKeeper.h"

#include <algorithm>
#include <clocale>
#include <initializer_list>
#include <locale.h>
#include <string_view>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

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

Utf8Thread::Utf8Thread() noexcept {
    const ErrnoKeeper keeper;
    for (const char* name : {"UTF-8", "C.UTF-8"}) {
        if (m_locale == nullptr)
            m_locale = ::newlocale(LC_CTYPE_MASK, name, nullptr);
    }
    if (m_locale != nullptr)
        m_before = ::uselocale(static_cast<locale_t>(m_locale));
}

Utf8Thread::~Utf8Thread() {
    if (m_locale == nullptr)
        return;
    ::uselocale(static_cast<locale_t>(m_before));
    ::freelocale(static_cast<locale_t>(m_locale));
}

bool isPlainLocale() noexcept {
    return isCurrent({"C", "POSIX"});
}

} // namespace tq::platform
