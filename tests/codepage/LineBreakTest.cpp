#include "codepage/LineBreakTable.h"
#include "reference/LineBreakRuns.h"

#include <TqOsBase/codepage/LmCodePage.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <limits>
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

// Areas whose unassigned code points go with what is in front of them.
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
        wchar_t c;
        int lineBreakClass;
    } rows[] = {
        {0, 19},
        {'\t', 15},
        {'\n', 22},
        {'\v', 19},
        {'\f', 27},
        {'\r', 21},
        {' ', 26},
        {'!', 5},
        {'"', 2},
        {'$', 8},
        {'%', 9},
        {'(', 0},
        {')', 1},
        {',', 7},
        {'.', 7},
        {'-', 14},
        {'/', 6},
        {'0', 10},
        {'9', 10},
        {'A', 11},
        {'z', 11},
        {0x85, 23},
        {0xA0, 3},
        {0xAD, 15},
        {0x300, 19},
        {0xE01, 28},
        {0x2014, 17},
        {0x200B, 18},
        {0x2024, 13},
        {0x2028, 27},
        {0x2029, 27},
        {0x2060, 20},
        {0x3000, 12},
        {0x3001, 1},
        {0x3002, 1},
        {0x3005, 4},
        {0x3041, 4},
        {0x3042, 12},
        {0x30FC, 4},
        {0x1100, 12},
        {0xAC00, 12},
        {0x4E00, 12},
        {0x4DC0, 11},
        {0xE000, 25},
        {0xFFFC, 24},
        {0x1D7CD, 11},
        {0x1D7CE, 10},
        {-1, 12},
        {0xE01EF, 19},
        {0xE01F0, 12},
        {0xF0000, 12},
        {0x10FFFF, 12},
        {std::numeric_limits<wchar_t>::min(), 12},
        {std::numeric_limits<wchar_t>::max(), 12},
    };
    for (const auto& row : rows)
        EXPECT_EQ(LmCodePage::LineBreakClass(row.c), row.lineBreakClass) << static_cast<int>(row.c);
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
    for (const auto& [last, lineBreakClass] : {std::pair(0x4DBF, 12),
                                               {0x4DFF, 11},
                                               {0xDFFF, 12},
                                               {0xF8FF, 25},
                                               {0xFAFF, 12},
                                               {0xFFFC, 24},
                                               {0x1D7C9 + 4, 11},
                                               {kLast, 19}}) {
        EXPECT_EQ(std::count_if(s_HighPartBreakClass.begin(), s_HighPartBreakClass.end(),
                                [last = last, wanted = lineBreakClass](const auto& row) {
                                    return row.last == last && row.lineBreakClass == wanted;
                                }),
                  1)
            << std::hex << last;
    }
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
    EXPECT_TRUE(
        std::all_of(table, std::end(LmCodePage::s_arrFullAnalyzeLineBreak), [](int byte) { return byte == 0; }));

    int classes[] = {kLineBreakAL, kLineBreakSP};
    int breaks[] = {-7, -7};
    EXPECT_EQ(LmCodePage::AnalyzeLineBreaks(classes, breaks, 2), 0);
    EXPECT_EQ(breaks[0], -7);
    EXPECT_EQ(breaks[1], -7);
}

} // namespace
