#pragma once

#include <TqOsBase/format/InputWithFormat.h>

#include <cstdarg>

namespace reference {

/// InputWithFormat with its pointers in the call.
inline int scanFrom(bool fromStream, const wchar_t* source, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int assigned = InputWithFormat(fromStream, source, format, args);
    va_end(args);
    return assigned;
}

template <class... Pointers>
int scan(const wchar_t* source, const wchar_t* format, Pointers... pointers) {
    return scanFrom(false, source, format, pointers...);
}

} // namespace reference
