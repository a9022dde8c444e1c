#include "reference/Testing.h"

#include <TqOsBase/porting/WindowsNames.h>

namespace {

using reference::widened;

template <class Char>
std::string plain(const Char* text) {
    return std::string(text, text + std::char_traits<Char>::length(text));
}
// What is written, and how much it would be.
std::pair<int, int> write(char (&room)[120], const char* format, std::va_list list) {
    return {_vsnprintf_s(room, _TRUNCATE, format, list), _vsnprintf(nullptr, 0, format, list)};
}
std::pair<int, int> write(wchar_t (&room)[120], const wchar_t* format, std::va_list list) {
    return {_vsnwprintf_s(room, _TRUNCATE, format, list), _vsnwprintf(nullptr, 0, format, list)};
}

// The text, or the error number when there is none.
template <class Char>
std::string text(const Char* format, ...) {
    Char room[120] = {Char('#'), Char()};
    std::va_list list;
    va_start(list, format);
    errno = 0;
    const auto [length, measured] = write(room, format, list);
    va_end(list);
    EXPECT_EQ(measured, length) << "the list stays unread";
    EXPECT_EQ(std::max(length, 0), static_cast<int>(std::char_traits<Char>::length(room)));
    return length >= 0 ? plain(room) : "error " + std::to_string(errno);
}

TEST(WindowsNames, FormatsAreReadAsWindowsReadsThem) {
    const long long big = -(1LL << 40);
    void* const address = reinterpret_cast<void*>(0xAB12);
    const std::string refused = "error " + std::to_string(EINVAL);
    const auto both = [](const char* format, auto... arguments) {
        const std::string wide = text(widened(format).c_str(), arguments...);
        EXPECT_EQ(wide, text(format, arguments...));
        return wide;
    };
    const std::pair<std::string, const char*> rows[] = {
        {text("%s %S %hs %ls %ws %hS %lS", "a", L"b", "c", L"d", L"e", "f", L"g"), "a b c d e f g"},
        {text(L"%s %S %hs %ls %ws %hS %lS", L"a", "b", "c", L"d", L"e", "f", L"g"), "a b c d e f g"},
        {text("%c%C%hc%lc%wc", 'a', L'b', 'c', L'd', L'e'), "abcde"},
        {text(L"%c%C%hc%lc%wc", L'a', 'b', 'c', L'd', L'e'), "abcde"},
        {both("%I64d %I64x %I32d %Iu %zu", big, 255LL, -3, sizeof big, sizeof big), "-1099511627776 ff -3 8 8"},
        {both("%hhd %hd %ld %lld %jd %td", 257, 65537, big, big, big, big),
         "1 1 -1099511627776 -1099511627776 -1099511627776 -1099511627776"},
        {both("%p|%20p|%-18p|%.3p|%#p", address, address, address, address, address),
         "000000000000AB12|    000000000000AB12|000000000000AB12  |000000000000AB12|0X000000000000AB12"},
        {both("%p%5.*p", address, 6, address), "000000000000AB1200AB12"},
        {both("%+5d|%-5i|%05u|% o|%#x|%X|%.3d", 7, 7, 7U, 8, 10, 10, 5), "   +7|7    |00007|10|0xa|A|005"},
        {both("%*.*f|%lf|%Lg|%E|%hG|%a", 7, 2, 1.5, 0.5, 2.5L, 1.0, 0.25, 1.0),
         "   1.50|0.500000|2.5|1.000000E+00|0.25|0x1p+0"},
        {text("100%% %%d %-4s|%.2S|%4.1ws|", "a", L"bcd", L"efg"), "100% %d a   |bc|   e|"},
        {text(L"100%% %%d %-4s|%.2S|%4.1hs|", L"a", "bcd", "efg"), "100% %d a   |bc|   e|"},
        {text("%s %S", "\xC3\xA9", L"\u00E9"), "\xC3\xA9 \xC3\xA9"}}; // also in the locale "C"
    for (const auto& [got, expected] : rows)
        EXPECT_EQ(got, expected);
    reference::GuardedBuffer<char> guarded(32);
    for (const char* format :
         {"%",    "a%",    "%n",  "%hn", "%5",   "%5%", "%.", "%l",    "%I64",         "%I64s",
          "%lls", "%I64c", "%wd", "%Ld", "%1$d", "%'d", "%Z", "%ld%y", "%2147483648d", "%.99999999999999999999d",
          "%\xC3"}) {
        EXPECT_EQ(both(guarded.place(format, std::strlen(format) + 1), 1, 1), refused) << format;
    }
    EXPECT_EQ(text(static_cast<const char*>(nullptr)) + text(static_cast<const wchar_t*>(nullptr)), refused + refused);
    // Those that grow most, on both sides of the length from which they take a block.
    for (const int pointers : {63, 64, 20000}) {
        std::string format;
        for (int i = 0; i < pointers; ++i)
            format += "%p";
        EXPECT_EQ(_scprintf((format + "%y").c_str()), -1);
    }
    EXPECT_EQ(_scprintf((std::string(1000, 'x') + "%p").c_str(), address), 1016);
    EXPECT_EQ(text(L"%*d", 524288, 1), "error " + std::to_string(EOVERFLOW));
    EXPECT_EQ(_scwprintf(L"%s%*d", L"ab", 9, 1), 11);
}

constexpr const wchar_t* kText = L"abcdefgh";

int bounded(wchar_t* dst, std::size_t count, const wchar_t* format, auto... arguments) {
    return reference::withList([=](auto... rest) { return _vsnwprintf(dst, count, rest...); }, format, arguments...);
}

// Narrow functions are instances of the same templates.
TEST(WindowsNames, BoundsOfFormattedText) {
    const std::wstring whole = kText;
    reference::GuardedBuffer<wchar_t> guarded(16);
    for (int length = 0; length <= 8; ++length) {
        const auto characters = static_cast<std::size_t>(length);
        const std::wstring expected = whole.substr(0, characters) + L'\0';
        for (std::size_t size = 0; size <= 10; ++size) {
            wchar_t* dst = guarded.last(size);
            const auto holds = [&](const std::wstring& content) {
                return size == 0 || std::equal(content.begin(), content.end(), dst);
            };
            const auto expectFailure = [&](int result) {
                EXPECT_TRUE(result == -1 && errno == (size == 0 ? EINVAL : ERANGE) && holds(std::wstring(1, L'\0')));
            };
            EXPECT_EQ(bounded(dst, size, L"%.*s", length, kText), characters <= size ? length : -1);
            EXPECT_TRUE(holds(expected.substr(0, size))) << length << " " << size;
            const int written = swprintf_s(dst, size, L"%.*s", length, kText);
            if (characters < size)
                EXPECT_TRUE(written == length && holds(expected));
            else
                expectFailure(written);
            for (const std::size_t count : std::initializer_list<std::size_t>{0, 2, 5, 9, _TRUNCATE}) {
                errno = 0;
                const int result = _snwprintf_s(dst, size, count, L"%.*s", length, kText);
                if (size == 0 || (count != _TRUNCATE && std::min(count, characters) >= size)) {
                    expectFailure(result);
                    continue;
                }
                const std::size_t kept = std::min({characters, count, size - 1});
                EXPECT_TRUE(result == (kept == characters ? length : -1) && errno == 0);
                EXPECT_TRUE(holds(whole.substr(0, kept) + L'\0')) << length << " " << size << " " << count;
            }
        }
    }
    wchar_t* const none = nullptr;
    EXPECT_TRUE(_snwprintf(none, 0, L"%d", 12345) == 5 && _snwprintf_s(none, 0, 0, L"%d", 5) == 0);
    for (const std::size_t size : {std::size_t(0), std::size_t(3)})
        EXPECT_TRUE(_snwprintf_s(none, size, 3, L"%d", 5) == -1 && std::exchange(errno, 0) == EINVAL);
    EXPECT_TRUE(bounded(none, 3, L"%d", 5) == -1 && std::exchange(errno, 0) == EINVAL);
    EXPECT_TRUE(swprintf_s(none, 3, L"%d", 5) == -1 && errno == EINVAL);
    char narrow[6] = "#####";
    EXPECT_TRUE(_snprintf(narrow, 3, "%d", 123) == 3 && narrow[3] == '#') << "without a terminator";
    EXPECT_TRUE(sprintf_s(narrow, 5, "%d", 1234) == 4 && _snprintf_s(narrow, 5, 3, "%d", 7890) == -1);
    EXPECT_STREQ(narrow, "789");
    EXPECT_TRUE(_snprintf(narrow, 4, "%y") == -1 && narrow[0] == '\0') << "emptied";
}

constexpr std::size_t kAll = 99; // as a count: the functions without one

int append(char* dst, std::size_t size, const char* src, std::size_t count) {
    return count == kAll ? strcat_s(dst, size, src) : strncat_s(dst, size, src, count);
}
int copy(char* dst, std::size_t size, const char* src, std::size_t count) {
    return count == kAll ? strcpy_s(dst, size, src) : strncpy_s(dst, size, src, count);
}

// Wide functions are instances of the same templates.
TEST(WindowsNames, SecureCopiesAndAppends) {
    const std::string letters = "abcdefgh";
    reference::GuardedBuffer<char> rooms(16), sources(16);
    // `old` characters in the destination; as many as its size mean that it has no terminator. A copy does not mind.
    const auto check = [&](bool isCopy, std::size_t size, std::size_t old, std::size_t length, std::size_t count) {
        char* dst = rooms.last(size);
        std::fill(dst, dst + size, '#');
        if (old < size)
            dst[old] = '\0';
        // A source that the count cuts need not have a terminator.
        const char* src = sources.place(letters.substr(0, length).c_str(), length + (length < count ? 1 : 0));
        errno = 0;
        const int result = isCopy ? copy(dst, size, src, count) : append(dst, size, src, count);
        const std::size_t kept = isCopy ? 0 : old;
        const std::size_t wanted = kept + std::min(length, count);
        const int noRoom = count == _TRUNCATE ? STRUNCATE : ERANGE;
        const int error = kept == size ? EINVAL : wanted < size ? 0 : noRoom;
        EXPECT_EQ(result, error) << isCopy << " " << size << " " << old << " " << length << " " << count;
        EXPECT_EQ(errno, error == STRUNCATE ? 0 : error);
        const std::string whole = std::string(kept, '#') + letters.substr(0, length);
        const bool isEmptied = error == EINVAL || error == ERANGE;
        EXPECT_EQ(dst, whole.substr(0, isEmptied ? 0 : std::min(wanted, size - 1)));
    };
    for (std::size_t size = 1; size <= 8; ++size)
        for (std::size_t old = 0; old <= size; ++old)
            for (std::size_t length = 0; length <= 8; ++length)
                for (const std::size_t count : {std::size_t(0), std::size_t(1), std::size_t(3), kAll, _TRUNCATE})
                    for (const bool isCopy : {false, true})
                        check(isCopy, size, old, length, count);
    char room[4] = "#";
    for (const std::size_t count : {kAll, std::size_t(1), _TRUNCATE}) {
        EXPECT_EQ(append(room, 0, "a", count), ERANGE);
        EXPECT_TRUE(append(nullptr, 4, "a", count) == EINVAL && append(room, 0, nullptr, count) == EINVAL);
        EXPECT_TRUE(append(room, 4, nullptr, count) == EINVAL && room[0] == '\0');
        EXPECT_EQ(copy(room, 4, nullptr, count), EINVAL);
    }
    wchar_t wide[4] = L"";
    EXPECT_TRUE(wcsncat_s(wide, 4, L"abcd", 2) == 0 && wcscat_s(wide, 4, L"c") == 0 && wide == std::wstring(L"abc"));
    EXPECT_TRUE(wcscat_s(wide, 4, L"d") == ERANGE && wide[0] == L'\0');
}

TEST(WindowsNames, Tokens) {
    char text[] = ",a,;b;";
    char* context = nullptr;
    EXPECT_TRUE(strtok_s(nullptr, ",;", &context) == nullptr && std::exchange(errno, 0) == EINVAL);
    EXPECT_STREQ(strtok_s(text, ",;", &context), "a");
    EXPECT_STREQ(strtok_s(nullptr, ",;", &context), "b");
    EXPECT_TRUE(strtok_s(nullptr, ",;", &context) == nullptr && strtok_s(nullptr, ",;", &context) == nullptr);
    EXPECT_TRUE(errno == 0 && strtok_s(text, nullptr, &context) == nullptr && errno == EINVAL);
    EXPECT_EQ(strtok_s(text, ",;", nullptr), nullptr);
    wchar_t wide[] = L",a;", *wideContext = nullptr;
    EXPECT_TRUE(wcstok_s(wide, L",;", &wideContext) == wide + 1 && wide[2] == L'\0' && wideContext == wide + 3);
}

TEST(WindowsNames, CopiesThatAreNotTheLibrarysOwn) {
    char room[4] = "#";
    EXPECT_EQ(strcpy_s(room, 0, "a"), ERANGE);
    for (const int refused : {strcpy_s(nullptr, 4, "a"), strcpy_s(room, 0, nullptr), strncpy_s(nullptr, 4, "a", 1),
                              strncpy_s(room, 0, "a", 1)})
        EXPECT_EQ(refused, EINVAL);
    EXPECT_STREQ(room, "#");
    wchar_t wide[4] = L"";
    EXPECT_EQ(strcpy_s(room, "abc") + wcscat_s(wide, L"abc"), 0) << "arrays";
    EXPECT_TRUE(strcat_s(room, "d") == ERANGE && wcscat_s(wide, L"d") == ERANGE);
    EXPECT_EQ(strncpy_s(room, "abcd", 2) + strncat_s(room, "cd", 1) + wcsncat_s(wide, L"cd", 1), 0);
    EXPECT_TRUE(room == std::string("abc") && sprintf_s(room, "%d", 1234) + swprintf_s(wide, L"%d", 1234) == -2);
    EXPECT_EQ(_snprintf_s(room, 2, "%d", 1234) + _snwprintf_s(wide, _TRUNCATE, L"%d", 1234), -2);
    EXPECT_TRUE(std::string(room) + plain(wide) == "12123" && _countof(room) == 4);
}

TEST(WindowsNames, ComparisonsAndDuplicates) {
    const std::tuple<const char*, const char*, std::size_t, int> rows[] = {
        {"", "", 9, 0},    {"Pier", "pIER", 9, 0}, {"a", "B", 9, -1},   {"B", "a", 9, 1},   {"_", "A", 9, -1},
        {"ab", "A", 9, 1}, {"ab", "AC", 1, 0},     {"ab", "AC", 2, -1}, {"\xE9", "a", 9, 1}};
    const auto sign = [](int value) { return (value > 0) - (value < 0); };
    for (const auto& [a, b, count, order] : rows) {
        const std::wstring wideA = widened(a), wideB = widened(b);
        EXPECT_EQ(sign(_strnicmp(a, b, count)), order) << a << " " << b;
        EXPECT_EQ(sign(_wcsnicmp(wideA.c_str(), wideB.c_str(), count)), order) << a << " " << b;
        if (count == 9) {
            EXPECT_EQ(sign(_stricmp(a, b)) + sign(_wcsicmp(wideA.c_str(), wideB.c_str())), 2 * order);
        }
    }
    errno = 0;
    for (const auto& [a, b] : {std::pair<const char*, const char*>{nullptr, "a"}, {"a", nullptr}})
        EXPECT_TRUE(_stricmp(a, b) == _NLSCMPERROR && std::exchange(errno, 0) == EINVAL);
    EXPECT_EQ(_wcsicmp(L"\u00C9", L"\u00E9") == 0, std::towlower(L'\u00C9') == L'\u00E9');
    const reference::LocaleScope locale(reference::kUtf8Locale);
    EXPECT_EQ(_wcsicmp(L"\u00C9", L"\u00E9"), 0) << "the locale has more letters";

    const std::unique_ptr<char, decltype(&std::free)> narrow(_strdup("pier"), std::free);
    const std::unique_ptr<wchar_t, decltype(&std::free)> wide(_wcsdup(L"pier"), std::free);
    EXPECT_EQ(narrow.get() + plain(wide.get()), "pierpier");
    EXPECT_TRUE(_strdup(nullptr) == nullptr && _wcsdup(nullptr) == nullptr);
}

TEST(WindowsNames, FilesAndFolders) {
    const reference::TempFolder folder;
    const auto before = std::filesystem::current_path();
    const std::wstring name = folder.wide(L"\u00E9\u4E2D");
    const std::wstring inside = name + L"/file.txt";
    EXPECT_EQ(_wmkdir(name.c_str()), 0);
    std::FILE* file = stdin;
    EXPECT_EQ(fopen_s(&file, folder.path("\xC3\xA9\xE4\xB8\xAD/file.txt").c_str(), "w+b"), 0);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(_fseeki64(file, (1LL << 32) + 2, SEEK_SET), 0);
    std::fputc('x', file);
    EXPECT_TRUE(_ftelli64(file) == (1LL << 32) + 3 && _fileno(file) == ::fileno(file));
    EXPECT_TRUE(_fseeki64(file, 0, 77) == -1 && errno == EINVAL);
    std::fclose(file);
    struct __stat64 status = {};
    EXPECT_EQ(_wstat64(inside.c_str(), &status), 0);
    EXPECT_TRUE(status.st_size == (1LL << 32) + 3 && (status.st_mode & _S_IFMT) == _S_IFREG);
    EXPECT_TRUE(_waccess_s(inside.c_str(), 6) == 0 && _wchdir(name.c_str()) == 0 &&
                _wstat64(L"file.txt", &status) == 0);
    std::filesystem::current_path(before);

    const std::wstring missing = folder.wide(L"missing");
    const auto errorOf = [](long long result) { return result == -1 ? errno : -1; };
    for (const int refused :
         {errorOf(_wstat64(nullptr, &status)), errorOf(_wstat64(inside.c_str(), nullptr)), _waccess_s(nullptr, 0),
          _waccess_s(inside.c_str(), 1), errorOf(_fseeki64(nullptr, 0, SEEK_SET)), errorOf(_fileno(nullptr)),
          errorOf(_ftelli64(nullptr)), fopen_s(nullptr, "a", "r"), fopen_s(&file, nullptr, "r"),
          fopen_s(&file, "a", nullptr)})
        EXPECT_EQ(refused, EINVAL);
    EXPECT_EQ(errorOf(_wmkdir(name.c_str())), EEXIST);
    EXPECT_EQ(errorOf(_wmkdir(std::wstring(1024, L'n').c_str())), ENAMETOOLONG);
    for (const std::wstring& path : {name, inside})
        EXPECT_EQ(errorOf(_wrmdir(path.c_str())), ENOTEMPTY);
    EXPECT_TRUE(errorOf(_wunlink(name.c_str())) == EACCES && errorOf(_wremove(name.c_str())) == EACCES);
    EXPECT_TRUE(errorOf(_wunlink(missing.c_str())) == ENOENT && errorOf(_wchdir(inside.c_str())) == ENOENT);
    EXPECT_EQ(_waccess_s(missing.c_str(), 0), ENOENT);
    EXPECT_NE(file, nullptr) << "left alone";
    EXPECT_TRUE(fopen_s(&file, folder.path("missing").c_str(), "r") == ENOENT && file == nullptr);
    EXPECT_TRUE(_wunlink(inside.c_str()) == 0 && _wrmdir(name.c_str()) == 0 && _waccess_s(name.c_str(), 0) == ENOENT);
}

std::wstring g_traced;

TEST(WindowsNames, TimeAndTraces) {
    LARGE_INTEGER frequency, start, end;
    const unsigned long long ticks = GetTickCount64();
    ASSERT_EQ(QueryPerformanceFrequency(&frequency) + QueryPerformanceCounter(&start), 2);
    Sleep(3);
    Sleep(0);
    QueryPerformanceCounter(&end);
    EXPECT_TRUE(end.QuadPart - start.QuadPart >= frequency.QuadPart * 3 / 1000 && GetTickCount64() - ticks >= 2U);
    EXPECT_EQ((static_cast<long long>(end.HighPart) << 32) + end.LowPart, end.QuadPart);
    EXPECT_TRUE(end.u.LowPart == end.LowPart && QueryPerformanceCounter(nullptr) == FALSE);

    TqTracer::setTraceFunctionW([](const wchar_t* text) { g_traced += text; });
    OutputDebugStringW(L"5 %s ");
    OutputDebugStringA("\xC3\xA9 %d");
    OutputDebugStringA(nullptr);
    OutputDebugStringW(nullptr);
    EXPECT_EQ(g_traced, L"5 %s \u00E9 %d");
    TqTracer::setTraceFunctionW(TqTracer::defaultTraceW);
    char zeroed[] = "abc";
    ZeroMemory(zeroed, 2);
    EXPECT_EQ(std::string(zeroed, 3), std::string("\0\0c", 3));
}

} // namespace
