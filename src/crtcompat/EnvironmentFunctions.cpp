#include "base/FileName.h"
#include "base/ProcessLock.h"
#include "crtcompat/SystemName.h"

#include <TqOsBase/crtcompat/EnvironmentFunctions.h>

#include <cerrno>
#include <cstdlib>
#include <cwchar>
#include <new>
#include <set>
#include <string>
#include <utility>

using namespace tq;

namespace {

// The environment holds pointers into these texts, so none is ever released, not even at exit.
char* keptForever(std::string text) {
    static auto& texts = *new std::set<std::string>;
    return const_cast<char*>(texts.insert(std::move(text)).first->c_str()); // putenv() takes it as writable
}

wchar_t* copyForCaller(const std::wstring& text) {
    auto* copy = static_cast<wchar_t*>(std::malloc((text.size() + 1) * sizeof(wchar_t)));
    return copy != nullptr ? std::wmemcpy(copy, text.c_str(), text.size() + 1) : nullptr;
}

} // namespace

wchar_t* _wgetenv(const wchar_t* name) {
    std::string narrowName;
    if (const int error = detail::systemName(name, narrowName); error != 0) {
        errno = error;
        return nullptr;
    }
    try {
        std::wstring text;
        {
            const detail::ProcessLock lock; // against _wputenv() alone: what else changes the environment does not ask
            const char* value = std::getenv(narrowName.c_str());
            if (value == nullptr)
                return nullptr;
            detail::fromSystemText(value, text);
        }
        return copyForCaller(text);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return nullptr;
    }
}

int _wputenv(const wchar_t* text) {
    std::string narrowText;
    if (const int error = detail::systemName(text, narrowText); error != 0) {
        errno = error;
        return -1;
    }
    try {
        const detail::ProcessLock lock;
        return ::putenv(keptForever(std::move(narrowText)));
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return -1;
    }
}
