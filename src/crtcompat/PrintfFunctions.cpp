#include "base/FormattedText.h"

#include <TqOsBase/crtcompat/PrintfFunctions.h>

#include <cstdio>
#include <cwchar>

using tq::detail::FormattedText;

// The wide functions copy the text that was formatted to measure it: formatting it again would give the same.

int _vscprintf(const char* format, std::va_list arguments) {
    return vsprintf_s(nullptr, 0, format, arguments);
}

int _vscwprintf(const wchar_t* format, std::va_list arguments) {
    const FormattedText formatted(format, arguments);
    return formatted.length() < 0 ? -1 : formatted.length() + 1;
}

int _vswprintf(wchar_t* dst, const wchar_t* format, std::va_list arguments) {
    if (dst == nullptr)
        return -1;
    const FormattedText formatted(format, arguments);
    if (formatted.length() >= 0)
        std::wmemcpy(dst, formatted.text(), static_cast<std::size_t>(formatted.length()) + 1);
    return formatted.length();
}

int vswprintf(wchar_t* dst, const wchar_t* format, std::va_list arguments) {
    return _vswprintf(dst, format, arguments);
}

int swprintf(wchar_t* dst, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = _vswprintf(dst, format, arguments);
    va_end(arguments);
    return length;
}

int wsprintf(wchar_t* dst, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int length = _vswprintf(dst, format, arguments);
    va_end(arguments);
    return length;
}

int vsprintf_s(char* dst, std::size_t size, const char* format, std::va_list arguments) {
    if (format == nullptr)
        return -1;
    std::va_list copy;
    va_copy(copy, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer does not follow va_copy from a parameter
    const int length = std::vsnprintf(dst, dst != nullptr ? size : 0, format, copy);
    va_end(copy);
    return length;
}

int vswprintf_s(wchar_t* dst, std::size_t size, const wchar_t* format, std::va_list arguments) {
    if (dst == nullptr)
        return -1;
    const FormattedText formatted(format, arguments);
    const auto length = static_cast<std::size_t>(formatted.length());
    if (formatted.length() < 0 || size == 0) {
        dst[0] = L'\0';
        return -1;
    }
    if (length < size) {
        std::wmemcpy(dst, formatted.text(), length + 1);
        return formatted.length();
    }
    std::wmemcpy(dst, formatted.text(), size);
    dst[size] = L'\0';
    return static_cast<int>(size - 1);
}
