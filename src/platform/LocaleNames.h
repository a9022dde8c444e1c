#pragma once

#include <clocale>
#include <locale.h>
#if defined(__APPLE__)
#include <xlocale.h> // newlocale() and its relatives
#endif

namespace tq::platform {

/// The locale with UTF-8 characters that is always there: each system knows one of these names.
inline constexpr const char* kUtf8LocaleNames[] = {"UTF-8", "C.UTF-8"};

} // namespace tq::platform
