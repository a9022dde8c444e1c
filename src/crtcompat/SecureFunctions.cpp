#include <TqOsBase/crtcompat/SecureFunctions.h>

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <wchar.h> // wcsnlen is POSIX's

int memcpy_s(void* dst, std::size_t dstSize, const void* src, std::size_t count) {
    if (count == 0)
        return 0;
    if (dst == nullptr)
        return -1;
    if (src == nullptr || dstSize < count) {
        std::memset(dst, 0, dstSize);
        return -1;
    }
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(std::memcpy(dst, src, count)));
}

int wmemcpy_s(wchar_t* dst, std::size_t dstSize, const wchar_t* src, std::size_t count) {
    if (dst == nullptr)
        return -1;
    std::wmemset(dst, L'\0', dstSize);
    if (src == nullptr)
        return -1;
    if (dstSize < count) {
        const std::size_t length = ::wcsnlen(src, dstSize + 1);
        if (length > dstSize)
            return -1;
        count = length;
    } else {
        count = ::wcsnlen(src, count);
    }
    std::wmemcpy(dst, src, count);
    return 0;
}

int wcscpy_s(wchar_t* dst, const wchar_t* src) {
    if (dst == nullptr || src == nullptr)
        return -1;
    std::wcscpy(dst, src);
    return 0;
}

int wcscpy_s(wchar_t* dst, int size, const wchar_t* src) {
    return wcsncpy_s(dst, src, size);
}

int wcsncpy_s(wchar_t* dst, const wchar_t* src, int count) {
    if (dst == nullptr || src == nullptr || count < 0)
        return -1;
    std::wcsncpy(dst, src, static_cast<std::size_t>(count));
    return 0;
}

int wcsncpy_s(wchar_t* dst, int size, const wchar_t* src, int count) {
    if (size < 0 || count < 0)
        return -1;
    return wmemcpy_s(dst, static_cast<std::size_t>(size), src, static_cast<std::size_t>(count));
}
