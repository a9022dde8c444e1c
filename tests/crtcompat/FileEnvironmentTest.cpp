#include "reference/Testing.h"

namespace {

const std::wstring kOutsideUnicode = {L'a', static_cast<wchar_t>(0x110000)};

class InLocale : public testing::TestWithParam<const char*> {
protected:
    std::wstring wide(const std::wstring& name) const { return m_folder.wide(name); }
    bool exists(const std::string& name) const { return std::filesystem::exists(m_folder.path(name)); }

    const reference::LocaleScope m_locale{GetParam()};
    const reference::TempFolder m_folder;
};
INSTANTIATE_TEST_SUITE_P(Locales, InLocale, testing::Values("C", reference::kUtf8Locale),
                         [](const auto& row) { return std::string(row.index == 0 ? "plain" : "utf8"); });

TEST_P(InLocale, FilesAreOpenedByAnyName) {
    std::FILE* out = _wfopen(wide(L"\u00E9\u4E2D\U0001F600").c_str(), L"w");
    ASSERT_NE(out, nullptr);
    std::fclose(out);
    EXPECT_TRUE(exists("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"));
    EXPECT_EQ(_wrename(wide(L"\u00E9\u4E2D\U0001F600").c_str(), wide(L"\u5B57").c_str()), 0);
    errno = EXDEV;
    EXPECT_EQ(_wfopen_s(&out, wide(L"\u5B57").c_str(), L"r"), EXDEV) << "whatever was there before";
    ASSERT_NE(out, nullptr);
    std::fclose(out);
    EXPECT_TRUE(_wfopen_s(&out, wide(L"missing").c_str(), L"r") == ENOENT && out == nullptr);

    wchar_t buffer[] = L"#";
    EXPECT_TRUE(_wgetcwd(buffer, 1) == nullptr && buffer[0] == L'#');
    errno = EXDEV;
    EXPECT_EQ(_waccess((std::wstring(2000, L'/') + wide(L"\u5B57")).c_str(), 6), 0) << "of any length";
    EXPECT_EQ(errno, EXDEV) << "the change of the locale does not show";
    EXPECT_EQ(_waccess(wide(L"missing").c_str(), 0), -1);
}

TEST_P(InLocale, NamesThatDoNotFitAreRefusedNotCut) {
    // The file "é", two bytes, by paths of the lengths at the bound.
    const std::wstring path = wide(L"\u00E9");
    for (const bool fits : {false, true}) {
        const std::wstring padded = std::wstring((fits ? 1022 : 1023) - path.size(), L'/') + path;
        errno = 0;
        std::FILE* out = _wfopen(padded.c_str(), L"w");
        EXPECT_TRUE((out != nullptr) == fits && errno == (fits ? 0 : ENAMETOOLONG) && exists("\xC3\xA9") == fits);
        if (out != nullptr)
            std::fclose(out);
        for (const auto& [from, to] : {std::pair(padded, wide(L"g")), {wide(L"g"), padded}}) {
            errno = 0;
            EXPECT_EQ(_wrename(from.c_str(), to.c_str()), fits ? 0 : -1);
            EXPECT_EQ(errno, fits ? 0 : ENAMETOOLONG);
        }
    }
    std::FILE* out = stdout;
    EXPECT_TRUE(_wfopen_s(&out, nullptr, L"w") == EINVAL && out == nullptr && _wfopen_s(&out, L"f", nullptr) == EINVAL);
    EXPECT_EQ(_wfopen_s(&out, kOutsideUnicode.c_str(), L"w"), EILSEQ);
    EXPECT_TRUE(_wfopen_s(nullptr, wide(L"never").c_str(), L"w") == EINVAL && !exists("never"));
    EXPECT_TRUE(_wrename(nullptr, L"f") == -1 && errno == EINVAL && _wrename(L"f", nullptr) == -1 && errno == EINVAL);
}

std::wstring valueOf(const std::wstring& name) {
    const std::unique_ptr<wchar_t, void (*)(void*)> value(_wgetenv(name.c_str()), std::free);
    return value != nullptr ? value.get() : L"(unset)";
}

TEST_P(InLocale, EnvironmentKeepsWhatItWasGiven) {
    EXPECT_EQ(valueOf(L"TQ_TEST"), L"(unset)");
    for (const std::wstring value : {L"plain", L"\u00E9\u4E2D", L"", L"a=b", L"plain"}) {
        EXPECT_TRUE(_wputenv((L"TQ_TEST=" + value).c_str()) == 0 && _wputenv((L"TQ_\u4E2D=x" + value).c_str()) == 0);
        EXPECT_TRUE(valueOf(L"TQ_TEST") == value && valueOf(L"TQ_\u4E2D") == L"x" + value);
    }
    EXPECT_TRUE(_wputenv(L"TQ_TEST=\u4E2D") == 0 && std::getenv("TQ_TEST") == std::string("\xE4\xB8\xAD"));
    ::setenv("TQ_TEST", std::string(5000, 'v').c_str(), 1);
    EXPECT_EQ(valueOf(L"TQ_TEST"), std::wstring(5000, L'v'));
    ::setenv("TQ_TEST", "a\xC3z\xE4\xB8\xAD\xFF", 1);
    EXPECT_EQ(valueOf(L"TQ_TEST"), L"a\uFFFDz\u4E2D\uFFFD");

    const std::wstring name = L"TQ_TEST=";
    for (const std::size_t size : {1023U, 1024U}) {
        const bool fits = size < 1024;
        const int error = fits ? 0 : ENAMETOOLONG;
        ::unsetenv("TQ_TEST");
        errno = 0;
        EXPECT_EQ(_wputenv((name + std::wstring(size - name.size(), L'v')).c_str()) == 0, fits) << size;
        EXPECT_TRUE(std::exchange(errno, 0) == error && (valueOf(L"TQ_TEST") == L"(unset)") == !fits) << size;
        EXPECT_TRUE(valueOf(std::wstring(size, L'n')) == L"(unset)" && errno == error) << size;
    }
    for (const auto& [refused, error] : {std::pair(kOutsideUnicode.c_str(), EILSEQ), {nullptr, EINVAL}}) {
        errno = 0;
        EXPECT_TRUE(_wputenv(refused) == -1 && std::exchange(errno, 0) == error);
        EXPECT_TRUE(_wgetenv(refused) == nullptr && errno == error);
    }
    ::unsetenv("TQ_TEST");
}

} // namespace
