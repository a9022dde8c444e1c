#include <TqOsBase/porting/WindowsCompare.h>

#include <cerrno>
#include <cstring>
#include <strings.h> // strcasecmp is POSIX's
#include <wchar.h>   // so is wcscasecmp

namespace {

template <class Char, class... Count>
int compare(int (*function)(const Char*, const Char*, Count...), const Char* a, const Char* b, Count... count) {
    if (a == nullptr || b == nullptr) {
        errno = EINVAL;
        return _NLSCMPERROR;
    }
    return function(a, b, count...);
}

} // namespace

int tq::windows::_stricmp(const char* a, const char* b) {
    return compare<char>(::strcasecmp, a, b);
}

int tq::windows::_wcsicmp(const wchar_t* a, const wchar_t* b) {
    return compare<wchar_t>(::wcscasecmp, a, b);
}

int tq::windows::_strnicmp(const char* a, const char* b, std::size_t count) {
    return compare<char>(::strncasecmp, a, b, count);
}

int tq::windows::_wcsnicmp(const wchar_t* a, const wchar_t* b, std::size_t count) {
    return compare<wchar_t>(::wcsncasecmp, a, b, count);
}

char* tq::windows::_strdup(const char* text) {
    return text == nullptr ? nullptr : ::strdup(text);
}

wchar_t* tq::windows::_wcsdup(const wchar_t* text) {
    return text == nullptr ? nullptr : ::wcsdup(text);
}
