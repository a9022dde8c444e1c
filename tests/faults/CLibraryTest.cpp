// The process's locale and the wide printf functions as other systems have them. The linker leads the calls here.
#include "base/FileName.h"
#include "reference/Testing.h"

namespace {

const char* g_locale = nullptr; // of single bytes; null for the true one
bool g_endsAtZero = false;
bool g_refusesWide = false;

// The character of a byte has the byte's value. What has no byte is dropped or refused, as the C library of Linux does.
std::size_t toBytes(char* dst, const wchar_t* src, std::size_t size) {
    std::size_t count = 0;
    for (; *src != L'\0'; ++src) {
        if (*src >= 0xE0000 && *src < 0xE0080)
            continue;
        if (*src > 0xFF)
            return static_cast<std::size_t>(-1);
        if (dst != nullptr && count < size)
            dst[count] = static_cast<char>(*src);
        ++count;
    }
    return count;
}

std::size_t toCharacters(wchar_t* dst, const char* src, std::size_t size) {
    std::size_t count = 0;
    for (; src[count] != '\0'; ++count)
        if (dst != nullptr && count < size)
            dst[count] = static_cast<unsigned char>(src[count]);
    return count;
}

} // namespace

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

char* __real_setlocale(int category, const char* name);
std::size_t __real_wcstombs(char* dst, const wchar_t* src, std::size_t size);
std::size_t __real_mbstowcs(wchar_t* dst, const char* src, std::size_t size);
int __real_vswprintf(wchar_t* dst, std::size_t size, const wchar_t* format, std::va_list arguments);

char* __wrap_setlocale(int category, const char* name) {
    const bool isPretended = g_locale != nullptr && name == nullptr;
    return isPretended ? const_cast<char*>(g_locale) : __real_setlocale(category, name);
}

std::size_t __wrap_wcstombs(char* dst, const wchar_t* src, std::size_t size) {
    errno = EILSEQ;
    return g_locale != nullptr ? toBytes(dst, src, size) : __real_wcstombs(dst, src, size);
}

std::size_t __wrap_mbstowcs(wchar_t* dst, const char* src, std::size_t size) {
    errno = EILSEQ;
    return g_locale != nullptr ? toCharacters(dst, src, size) : __real_mbstowcs(dst, src, size);
}

// macOS's formats in bytes, then converts back what stands before the first 0, but returns the count of all.
int __wrap_vswprintf(wchar_t* dst, std::size_t size, const wchar_t* format, std::va_list arguments) {
    if (!g_endsAtZero)
        return g_refusesWide ? -1 : __real_vswprintf(dst, size, format, arguments);
    wchar_t all[5000];
    const int count = __real_vswprintf(all, 5000, format, arguments);
    const std::size_t written = std::wcslen(all);
    if (written >= size)
        return -1;
    std::wmemcpy(dst, all, written + 1);
    return count;
}

int __wrap_swprintf(wchar_t* dst, std::size_t size, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int count = __wrap_vswprintf(dst, size, format, arguments);
    va_end(arguments);
    return count;
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace {

TEST(CLibraries, NoNameOfAFileBecomesAnothers) {
    const char* const latin = "xx_XX.ISO-8859-1";
    const std::tuple<const char*, const wchar_t*, const char*> rows[] = {
        {latin, L"plan.txt", "plan.txt"},
        {latin, L"\u00E9.txt", "\xE9.txt"},
        {latin, L"plan\U000E0061.txt", "plan\xF3\xA0\x81\xA1.txt"}, // not plan.txt
        {latin, L"\u00E9\u4E2D", "\xC3\xA9\xE4\xB8\xAD"},
        {"C", L"\u00E9", "\xC3\xA9"},
        {"POSIX", L"\u00E9", "\xC3\xA9"}};
    for (const auto& [locale, name, expected] : rows) {
        g_locale = locale;
        errno = EXDEV;
        std::string bytes;
        std::wstring back;
        EXPECT_TRUE(tq::detail::toFileName(name, bytes));
        tq::detail::fromSystemText(bytes.c_str(), back);
        EXPECT_EQ(errno, EXDEV);
        g_locale = nullptr;
        EXPECT_TRUE(bytes == expected && back == name) << bytes;
    }
}

TEST(CLibraries, NothingIsReadThatWasNotWritten) {
    reference::GuardedBuffer<wchar_t> room(2048);
    for (const int width : {1, 1022, 2000}) { // within the first room, just past it, far past it
        const int length = width + 2;
        wchar_t* dst = room.last(static_cast<std::size_t>(length) + 1);
        swprintf(dst, L"%*d", length, 7); // leaves its traces in the memory that the next call formats in
        g_endsAtZero = true;
        const int written = swprintf(dst, L"a%lc%*d", 0, width, 7);
        const int needed = reference::withList(_vscwprintf, L"a%lc%*d", 0, width, 7);
        g_endsAtZero = false;
        EXPECT_TRUE(written == length && needed == length + 1);
        std::wstring expected(static_cast<std::size_t>(length), L'\0');
        expected[0] = L'a';
        EXPECT_EQ(std::wstring(dst, expected.size()), expected);
    }
    const TqErrorStatus error(Lumo::kOk);
    g_refusesWide = true;
    EXPECT_EQ(error.description(), nullptr);
    g_refusesWide = false;
    EXPECT_STREQ(error.description(), L"error type: 0\tmessage:");
}

} // namespace
