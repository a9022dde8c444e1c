#include "base/CharacterLocale.h"

#include "base/ErrnoKeeper.h"
#include "base/ProcessLock.h"
#include "platform/LocaleNames.h"

#include <algorithm>
#include <clocale>
#include <initializer_list>
#include <iterator>
#include <string_view>

namespace tq::detail {

namespace {

using platform::kUtf8LocaleNames;

template <class Names>
bool isCurrent(const Names& names) noexcept {
    const ProcessLock lock; // another thread's useUtf8Characters() releases the name
    const char* current = std::setlocale(LC_CTYPE, nullptr);
    return current != nullptr &&
           std::find(std::begin(names), std::end(names), std::string_view(current)) != std::end(names);
}

} // namespace

void useUtf8Characters() noexcept {
    const ErrnoKeeper keeper;
    const ProcessLock lock;
    // Asked first, because looking for a name that is not there takes a search through the file system.
    if (isCurrent(kUtf8LocaleNames))
        return;
    for (const char* name : kUtf8LocaleNames) {
        if (std::setlocale(LC_CTYPE, name) != nullptr)
            return;
    }
}

Utf8Thread::Utf8Thread() noexcept {
    const ErrnoKeeper keeper;
    for (const char* name : kUtf8LocaleNames) {
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
    return isCurrent(std::initializer_list<const char*>{"C", "POSIX"});
}

} // namespace tq::detail
