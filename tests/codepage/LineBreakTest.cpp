#include "codepage/LineBreakTable.h"
#include "reference/LineBreakRuns.h"

#include <TqOsBase/codepage/LmCodePage.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using tq::detail::s_HighPartBreakClass;

constexpr int kUnassigned = -1;
constexpr int kCodePoints = 0x110000;
constexpr int kHighPart = 0x3200;
constexpr int kLast = 0xE01EF;

std::vector<int> assignedClasses() {
    std::vector<int> classes(kCodePoints, kUnassigned);
    for (const reference::LineBreakRuns& row : reference::kLineBreakRuns) {
        std::istringstream in(row.runs);
        for (std::string run; in >> run;) {
            std::size_t firstLength = 0;
            const int first = std::stoi(run, &firstLength, 16);
            const int last = firstLength == run.size() ? first : std::stoi(run.substr(firstLength + 1), nullptr, 16);
            for (int c = first; c <= last; ++c) {
                EXPECT_EQ(classes[static_cast<std::size_t>(c)], kUnassigned) << run;
                classes[static_cast<std::size_t>(c)] = row.lineBreakClass;
            }
        }
    }
    return classes;
}

// Areas whose unassigned code points go with what is before them.
bool isInOneBlock(int c) {
    return (c >= 0x3200 && c <= 0xDFFF) || (c >= 0xF900 && c <= 0xFAFF) || (c >= 0x1D400 && c <= 0x1D7FF);
}

TEST(LineBreakClass, EveryCodePoint) {
    std::vector<int> expected = assignedClasses();
    const auto classAt = [&expected](int c) -> int& { return expected[static_cast<std::size_t>(c)]; };
    for (int c = 0; c < kHighPart; ++c) {
        if (classAt(c) == kUnassigned)
            classAt(c) = kLineBreakXX;
    }
    for (int c = kHighPart; c <= kLast; ++c) {
        if (classAt(c) == kUnassigned && isInOneBlock(c))
            classAt(c) = classAt(c - 1);
    }
    std::fill(expected.begin() + kLast + 1, expected.end(), kLineBreakID);
    for (int c = kLast; c >= kHighPart; --c) {
        if (classAt(c) == kUnassigned)
            classAt(c) = classAt(c + 1);
    }
    int wrong = 0;
    for (int c = 0; c < kCodePoints; ++c) {
        if (LmCodePage::LineBreakClass(static_cast<wchar_t>(c)) != classAt(c) && ++wrong <= 10)
            ADD_FAILURE() << "U+" << std::hex << c << " is not of class " << std::dec << classAt(c);
    }
    EXPECT_EQ(wrong, 0);
}

TEST(LineBreakClass, KnownCharacters) {
    const struct {
        int lineBreakClass;
        std::wstring characters;
    } rows[] = {{0, L"("},
                {1, L")\u3001\u3002"},
                {2, L"\""},
                {3, L"\u00A0"},
                {4, L"\u3005\u3041\u30FC"},
                {5, L"!"},
                {6, L"/"},
                {7, L",."},
                {8, L"$"},
                {9, L"%"},
                {10, L"09\U0001D7CE"},
                {11, L"Az\u4DFF\U0001D7CD"},
                {12, L"\u3000\u3042\u1100\uAC00\u4DBF\u4E00\uFA6B\uFAFF\U000F0000\U0010FFFF"},
                {13, L"\u2024"},
                {14, L"-"},
                {15, L"\t\u00AD"},
                {17, L"\u2014"},
                {18, L"\u200B"},
                {19, L"\v\u0300\U000E01EF"},
                {20, L"\u2060"},
                {21, L"\r"},
                {22, L"\n"},
                {23, L"\x85"},
                {24, L"\uFFFC"},
                {25, L"\uE000\uF8FF"},
                {26, L" "},
                {27, L"\f\u2028\u2029"},
                {28, L"\u0E01"}};
    for (const auto& row : rows) {
        for (const wchar_t c : row.characters)
            EXPECT_EQ(LmCodePage::LineBreakClass(c), row.lineBreakClass) << static_cast<int>(c);
    }
    for (const wchar_t c : {-1, 0x110000, INT_MIN, INT_MAX})
        EXPECT_EQ(LmCodePage::LineBreakClass(c), 12) << static_cast<int>(c);
}

TEST(LineBreakClass, RowsOfTheHighPart) {
    const std::vector<int> assigned = assignedClasses();
    ASSERT_EQ(s_HighPartBreakClass.size(), 154U);
    for (std::size_t i = 0; i + 1 < s_HighPartBreakClass.size(); ++i) {
        const auto& row = s_HighPartBreakClass[i];
        const auto& following = s_HighPartBreakClass[i + 1];
        EXPECT_LT(row.last, row.next);
        EXPECT_LE(row.next, following.last);
        EXPECT_EQ(assigned[static_cast<std::size_t>(row.next)], following.lineBreakClass);
        EXPECT_TRUE(row.last + 1 < row.next || row.lineBreakClass != following.lineBreakClass) << std::hex << row.last;
        for (std::int32_t c = row.last + 1; c < row.next; ++c)
            EXPECT_EQ(assigned[static_cast<std::size_t>(c)], kUnassigned);
    }
    EXPECT_EQ(s_HighPartBreakClass.back().last, kLast);
    EXPECT_EQ(s_HighPartBreakClass.back().lineBreakClass, kLineBreakCM);
}

// The rules of the line breaking algorithm for two characters, first match first.
int actionByRules(int before, int after) {
    const auto isOne = [](int c, std::initializer_list<int> classes) {
        return std::find(classes.begin(), classes.end(), c) != classes.end();
    };
    if (after == kLineBreakZW)
        return kBreakProhibited;
    if (before == kLineBreakZW)
        return kBreakDirect;
    if (after == kLineBreakCM)
        return before == kLineBreakOP ? kBreakProhibited : kBreakCombiningIndirect;
    if (before == kLineBreakCM)
        before = kLineBreakAL;
    const std::pair<int, int> acrossSpaces[] = {
        {kLineBreakQU, kLineBreakOP}, {kLineBreakCL, kLineBreakNS}, {kLineBreakB2, kLineBreakB2}};
    const std::pair<int, int> together[] = {
        {kLineBreakAL, kLineBreakIN}, {kLineBreakID, kLineBreakIN}, {kLineBreakIN, kLineBreakIN},
        {kLineBreakNU, kLineBreakIN}, {kLineBreakID, kLineBreakPO}, {kLineBreakAL, kLineBreakNU},
        {kLineBreakNU, kLineBreakAL}, {kLineBreakCL, kLineBreakPO}, {kLineBreakHY, kLineBreakNU},
        {kLineBreakIS, kLineBreakNU}, {kLineBreakNU, kLineBreakNU}, {kLineBreakNU, kLineBreakPO},
        {kLineBreakPR, kLineBreakAL}, {kLineBreakPR, kLineBreakHY}, {kLineBreakPR, kLineBreakID},
        {kLineBreakPR, kLineBreakNU}, {kLineBreakPR, kLineBreakOP}, {kLineBreakSY, kLineBreakNU},
        {kLineBreakAL, kLineBreakAL}};
    const std::pair pair(before, after);
    if (isOne(after, {kLineBreakCL, kLineBreakEX, kLineBreakIS, kLineBreakSY, kLineBreakWJ}) ||
        before == kLineBreakOP ||
        std::find(std::begin(acrossSpaces), std::end(acrossSpaces), pair) != std::end(acrossSpaces))
        return kBreakProhibited;
    if (isOne(before, {kLineBreakWJ, kLineBreakGL, kLineBreakQU, kLineBreakBB}) ||
        isOne(after, {kLineBreakGL, kLineBreakQU, kLineBreakBA, kLineBreakHY, kLineBreakNS}) ||
        std::find(std::begin(together), std::end(together), pair) != std::end(together))
        return kBreakIndirect;
    return kBreakDirect;
}

TEST(LineBreakPairs, FollowTheRules) {
    const unsigned char* table = LmCodePage::s_ptrAnalyzeLineBreak;
    ASSERT_EQ(table, LmCodePage::s_arrFullAnalyzeLineBreak);
    ASSERT_EQ(sizeof LmCodePage::s_arrFullAnalyzeLineBreak, 448U);
    for (int before = 0; before < kPairTableClasses; ++before) {
        for (int after = 0; after < kPairTableClasses; ++after, ++table)
            EXPECT_EQ(*table, actionByRules(before, after)) << before << " then " << after;
    }
    for (; table != std::end(LmCodePage::s_arrFullAnalyzeLineBreak); ++table)
        EXPECT_EQ(*table, 0);

    int classes[] = {kLineBreakAL, kLineBreakSP};
    int breaks[] = {-7, -7};
    EXPECT_EQ(LmCodePage::AnalyzeLineBreaks(classes, breaks, 2), 0);
    EXPECT_EQ(breaks[0], -7);
    EXPECT_EQ(breaks[1], -7);
}

} // namespace
