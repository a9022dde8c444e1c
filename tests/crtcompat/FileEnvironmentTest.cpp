#include <TqOsBase/crtcompat/EnvironmentFunctions.h>
#include <TqOsBase/crtcompat/FileFunctions.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

namespace fs = std::filesystem;

const std::wstring kOutsideUnicode = {L'a', static_cast<wchar_t>(0x110000)};

// Each test in the locale "C" and in "C.UTF-8", in a folder of its own.
class InLocale : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        std::setlocale(LC_ALL, GetParam());
        std::string pattern = (fs::temp_directory_path() / "tqcrtXXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        m_folder = pattern;
    }
    void TearDown() override {
        std::setlocale(LC_ALL, "C");
        fs::remove_all(m_folder);
    }

    std::wstring wide(const std::wstring& name) const { return m_folder.wstring() + L"/" + name; }
    fs::path path(const std::string& name) const { return m_folder / name; }
    void create(const std::string& name) const { std::ofstream(path(name)) << "x"; }

    fs::path m_folder;
};
INSTANTIATE_TEST_SUITE_P(Locales, InLocale, testing::Values("C", "C.UTF-8"),
                         [](const auto& row) { return std::string(row.index == 0 ? "plain" : "utf8"); });

TEST_P(InLocale, FilesAreOpenedByAnyName) {
    std::FILE* out = _wfopen(wide(L"\u00E9\u4E2D\U0001F600").c_str(), L"w");
    ASSERT_NE(out, nullptr);
    std::fclose(out);
    EXPECT_TRUE(fs::exists(path("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80")));
    EXPECT_EQ(_wrename(wide(L"\u00E9\u4E2D\U0001F600").c_str(), wide(L"\u5B57").c_str()), 0);
    EXPECT_TRUE(fs::exists(path("\xE5\xAD\x97")));

    errno = EXDEV;
    std::FILE* again = nullptr;
    EXPECT_EQ(_wfopen_s(&again, wide(L"\u5B57").c_str(), L"r"), EXDEV) << "whatever was there before";
    ASSERT_NE(again, nullptr);
    std::fclose(again);
    EXPECT_EQ(_wfopen_s(&again, wide(L"missing").c_str(), L"r"), ENOENT);
    EXPECT_EQ(again, nullptr);
    EXPECT_EQ(_wrename(wide(L"missing").c_str(), wide(L"other").c_str()), -1);

    wchar_t buffer[] = L"####";
    EXPECT_EQ(_wgetcwd(buffer, 4), nullptr);
    EXPECT_STREQ(buffer, L"####");
    EXPECT_EQ(_waccess(wide(L"\u5B57").c_str(), 6), 0);
    EXPECT_EQ(_waccess(wide(L"missing").c_str(), 0), -1);
    EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8") << "_waccess leaves it so";
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), GetParam());
}

TEST_P(InLocale, NamesThatDoNotFitAreRefusedNotCut) {
    // A path to one file, of any number of bytes.
    const auto padded = [&](std::size_t size, const std::wstring& name) {
        const std::size_t bytes = m_folder.string().size() + name.size() + (name == L"\u00E9" ? 1 : 0);
        return m_folder.wstring() + std::wstring(size - bytes, L'/') + name;
    };
    for (const std::wstring name : {L"f", L"\u00E9"}) {
        for (const std::size_t size : {1023U, 1024U, 1025U, 5000U}) {
            const bool fits = size < 1024;
            const std::wstring full = padded(size, name);
            errno = 0;
            std::FILE* out = _wfopen(full.c_str(), L"w");
            EXPECT_EQ(out != nullptr, fits) << size;
            EXPECT_EQ(errno, fits ? 0 : ENAMETOOLONG) << size;
            EXPECT_EQ(fs::is_empty(m_folder), !fits) << size;
            if (out != nullptr)
                std::fclose(out);
            create("f");
            EXPECT_EQ(_wrename(full.c_str(), wide(L"g").c_str()), fits ? 0 : -1) << size;
            EXPECT_EQ(_wrename(wide(L"f").c_str(), full.c_str()), fits && name != L"f" ? 0 : -1) << size;
            fs::remove_all(m_folder);
            fs::create_directory(m_folder);
        }
    }
    std::FILE* out = stdout;
    EXPECT_EQ(_wfopen_s(&out, padded(1024, L"f").c_str(), L"w"), ENAMETOOLONG);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(_wfopen_s(&out, nullptr, L"w"), EINVAL);
    EXPECT_EQ(_wfopen_s(&out, L"f", nullptr), EINVAL);
    EXPECT_EQ(_wfopen_s(&out, kOutsideUnicode.c_str(), L"w"), EILSEQ);
    EXPECT_EQ(_wfopen_s(nullptr, wide(L"never").c_str(), L"w"), EINVAL);
    EXPECT_TRUE(fs::is_empty(m_folder));
    EXPECT_EQ(_wrename(nullptr, L"f"), -1);
    EXPECT_EQ(_wrename(L"f", nullptr), -1);
    EXPECT_EQ(_waccess(padded(1024, L"").c_str(), 0), 0) << "no such bound";
    EXPECT_EQ(_waccess(nullptr, 0), -1);
}

struct Free {
    void operator()(wchar_t* text) const { std::free(text); }
};

std::wstring valueOf(const wchar_t* name) {
    const std::unique_ptr<wchar_t, Free> value(_wgetenv(name));
    return value != nullptr ? value.get() : L"(unset)";
}

TEST_P(InLocale, EnvironmentKeepsWhatItWasGiven) {
    EXPECT_EQ(valueOf(L"TQ_TEST"), L"(unset)");
    for (const std::wstring value : {L"plain", L"\u00E9\u4E2D", L"", L"a=b"}) {
        EXPECT_EQ(_wputenv((L"TQ_TEST=" + value).c_str()), 0);
        EXPECT_EQ(_wputenv((L"TQ_OTHER=x" + value).c_str()), 0);
        EXPECT_EQ(_wputenv((L"TQ_TEST=" + value).c_str()), 0);
        EXPECT_EQ(valueOf(L"TQ_TEST"), value);
        EXPECT_EQ(valueOf(L"TQ_OTHER"), L"x" + value);
    }
    EXPECT_EQ(_wputenv(L"TQ_TEST=\u4E2D"), 0);
    EXPECT_STREQ(std::getenv("TQ_TEST"), "\xE4\xB8\xAD");
    EXPECT_EQ(_wputenv(L"TQ_\u4E2D=x"), 0);
    EXPECT_EQ(valueOf(L"TQ_\u4E2D"), L"x");

    const std::string longValue(5000, 'v');
    ::setenv("TQ_TEST", longValue.c_str(), 1);
    EXPECT_EQ(valueOf(L"TQ_TEST"), std::wstring(longValue.begin(), longValue.end()));
    ::setenv("TQ_TEST", "a\xC3z\xE4\xB8\xAD\xFF", 1);
    EXPECT_EQ(valueOf(L"TQ_TEST"), L"a\uFFFDz\u4E2D\uFFFD");
    ::unsetenv("TQ_TEST");
    ::unsetenv("TQ_OTHER");
}

TEST_P(InLocale, EnvironmentTextsThatDoNotFitAreRefused) {
    const std::wstring name = L"TQ_TEST=";
    for (const std::size_t size : {1023U, 1024U, 3000U}) {
        const bool fits = size < 1024;
        ::unsetenv("TQ_TEST");
        errno = 0;
        EXPECT_EQ(_wputenv((name + std::wstring(size - name.size(), L'v')).c_str()) == 0, fits) << size;
        EXPECT_EQ(errno, fits ? 0 : ENAMETOOLONG) << size;
        EXPECT_EQ(valueOf(L"TQ_TEST") == L"(unset)", !fits) << size;
        errno = 0;
        EXPECT_EQ(_wgetenv(std::wstring(size, L'n').c_str()), nullptr);
        EXPECT_EQ(errno, fits ? 0 : ENAMETOOLONG) << size;
    }
    EXPECT_NE(_wputenv(nullptr), 0);
    EXPECT_NE(_wputenv(kOutsideUnicode.c_str()), 0);
    EXPECT_EQ(_wgetenv(nullptr), nullptr);
    EXPECT_EQ(_wgetenv(kOutsideUnicode.c_str()), nullptr);
    EXPECT_EQ(errno, EILSEQ);
}

} // namespace
