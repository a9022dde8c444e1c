#include "platform/FileName.h"

#include <cerrno>
#include <clocale>
#include <gtest/gtest.h>
#include <string>

namespace {

using tq::platform::toFileName;

TEST(FileName, IsUtf8UnlessTheLocaleExpressesItAndLeavesErrnoAlone) {
    struct Row {
        std::wstring name;
        const char* expected; // null: refused
    };
    const Row rows[] = {
        {L"", ""},
        {L"/a b", "/a b"},
        {L"\u00E9\u4E2D\U0001F600", "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"},
        {L"a\U0010FFFF", "a\xF4\x8F\xBF\xBF"},
        {std::wstring(L"a") + static_cast<wchar_t>(0x110000), nullptr},
        {std::wstring(L"a") + static_cast<wchar_t>(-2), nullptr},
    };
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"C", "C.UTF-8"}) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
        for (const Row& row : rows) {
            std::string out = "left over";
            errno = EXDEV;
            EXPECT_EQ(toFileName(row.name.c_str(), out), row.expected != nullptr);
            EXPECT_EQ(errno, EXDEV);
            if (row.expected != nullptr) {
                EXPECT_EQ(out, row.expected);
            }
        }
        const std::wstring longName(5000, L'n');
        std::string out;
        EXPECT_TRUE(toFileName(longName.c_str(), out));
        EXPECT_EQ(out, std::string(5000, 'n'));
    }
    std::setlocale(LC_ALL, before.c_str());
}

} // namespace
