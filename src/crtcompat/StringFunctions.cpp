#include "crtcompat/Placeholder.h"

#include <TqOsBase/crtcompat/StringFunctions.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>
#include <cwchar>
#include <cwctype>

using tq::detail::endProcess;

namespace {

wchar_t upper(wchar_t c) {
    return static_cast<wchar_t>(std::towupper(static_cast<std::wint_t>(c)));
}

wchar_t lower(wchar_t c) {
    return static_cast<wchar_t>(std::towlower(static_cast<std::wint_t>(c)));
}

std::size_t lengthOf(const wchar_t* s) {
    return s != nullptr ? std::wcslen(s) : 0;
}

thread_local wchar_t* g_plast4wcstok = nullptr;

} // namespace

char* _strlwr(char* s) {
    const auto lowerByte = [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); };
    std::transform(s, s + (s != nullptr ? std::strlen(s) : 0), s, lowerByte);
    return s;
}

wchar_t* _wcsupr(wchar_t* s) {
    return _wcsupr_s(s, lengthOf(s));
}

wchar_t* _wcslwr(wchar_t* s) {
    std::transform(s, s + lengthOf(s), s, lower);
    return s;
}

wchar_t* _wcsupr_s(wchar_t* s, std::size_t size) {
    std::transform(s, s + (s != nullptr ? size : 0), s, upper);
    return s;
}

wchar_t* _wcsrev(wchar_t* s) {
    std::reverse(s, s + lengthOf(s));
    return s;
}

int _wcsicoll(const wchar_t* a, const wchar_t* b) {
    return a != nullptr && b != nullptr ? std::wcscoll(a, b) : INT_MAX;
}

std::size_t _wcscspn(const wchar_t* s, const wchar_t* set) {
    return s != nullptr && set != nullptr ? std::wcscspn(s, set) : 0;
}

wchar_t* _wcsinc(const wchar_t* p) {
    return const_cast<wchar_t*>(p + 1);
}

wchar_t* _wcsninc(const wchar_t* p, std::size_t n) {
    return const_cast<wchar_t*>(p + n);
}

unsigned int _wcsnextc(const wchar_t* p) {
    return p != nullptr ? static_cast<unsigned int>(p[1]) : 0;
}

wchar_t* _wcstok(wchar_t* s, const wchar_t* delimiters) {
    if (s != nullptr)
        g_plast4wcstok = nullptr;
    else if (g_plast4wcstok == nullptr)
        return nullptr;
    if (delimiters == nullptr)
        return nullptr;
    return std::wcstok(s, delimiters, &g_plast4wcstok);
}

int lstrlenA(const char* s) {
    return s != nullptr ? static_cast<int>(std::strlen(s)) : 0;
}

int lstrlenW(const wchar_t* s) {
    return static_cast<int>(lengthOf(s));
}

wchar_t* lstrcpy(wchar_t* dst, const wchar_t* src) {
    return dst != nullptr && src != nullptr ? std::wcscpy(dst, src) : nullptr;
}

wchar_t* CharLower(wchar_t* text) {
    return text;
}

wchar_t* CharUpper(wchar_t* text) {
    return text;
}

int _wcsncoll(const wchar_t*, const wchar_t*, std::size_t) {
    endProcess("_wcsncoll");
}

int _wcsnicoll(const wchar_t*, const wchar_t*, std::size_t) {
    endProcess("_wcsnicoll");
}
