#include "platform/SystemCodePage.h"

#include <TqOsBase/codepage/NlsFunctions.h>

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <cwchar>

unsigned int GetACP() {
    return tq::platform::kSystemAnsiCodePage;
}

LCID GetThreadLocale() {
    return 0;
}

bool SetThreadLocale(LCID) {
    return true;
}

LCID GetSystemDefaultLCID() {
    return 0;
}

LCID GetUserDefaultLCID() {
    return 0;
}

int GetLocaleInfo(LCID, unsigned int, wchar_t*, int) {
    return 0;
}

bool IsValidCodePage(unsigned int) {
    return false;
}

bool IsDBCSLeadByte(unsigned char) {
    return false;
}

bool IsDBCSLeadByteEx(unsigned int, unsigned char) {
    return false;
}

int isleadbyte(int) {
    return 0;
}

int LCMapStringW(LCID, unsigned int, const wchar_t*, int, wchar_t*, int) {
    return 0;
}

bool GetStringTypeExW(LCID, unsigned int, const wchar_t*, int, unsigned short* types) {
    if (types != nullptr)
        types[0] = 0;
    return true;
}

// For a negative count the bound is the longest result that the text can have. The largest size_t would not do: a C
// library may form the end of the destination from it, which wraps, and then convert nothing.

int MultiByteToWideChar(unsigned int, unsigned int, const char* src, int srcCount, wchar_t* dst, int) {
    if (src == nullptr)
        return -1;
    const std::size_t bound = srcCount < 0 ? std::strlen(src) + 1 : static_cast<std::size_t>(srcCount);
    return static_cast<int>(std::mbstowcs(dst, src, bound));
}

int WideCharToMultiByte(unsigned int, unsigned int, const wchar_t* src, int srcCount, char* dst, int, const char*,
                        bool*) {
    if (src == nullptr)
        return -1;
    const std::size_t bound = srcCount < 0 ? (std::wcslen(src) + 1) * MB_LEN_MAX : static_cast<std::size_t>(srcCount);
    return static_cast<int>(std::wcstombs(dst, src, bound));
}
