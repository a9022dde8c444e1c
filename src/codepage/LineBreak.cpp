#include "base/CharacterClass.h"
#include "codepage/LineBreakTable.h"

#include <TqOsBase/codepage/LmCodePage.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

using namespace tq::detail;

// Rows: the class before the place, columns: the class after it. 0 direct, 1 indirect, 2 combining indirect,
// 3 prohibited. A combining mark without a base (row CM) counts as a letter.
// clang-format off
const unsigned char LmCodePage::s_arrFullAnalyzeLineBreak[448] = {
//  OP CL QU GL NS EX SY IS PR PO NU AL ID IN HY BA BB B2 ZW CM WJ
    3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, // OP
    0, 3, 1, 1, 3, 3, 3, 3, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // CL
    3, 3, 1, 1, 1, 3, 3, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 2, 3, // QU
    1, 3, 1, 1, 1, 3, 3, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 2, 3, // GL
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // NS
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // EX
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // SY
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // IS
    1, 3, 1, 1, 1, 3, 3, 3, 0, 0, 1, 1, 1, 0, 1, 1, 0, 0, 3, 2, 3, // PR
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // PO
    0, 3, 1, 1, 1, 3, 3, 3, 0, 1, 1, 1, 0, 1, 1, 1, 0, 0, 3, 2, 3, // NU
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 1, 1, 0, 1, 1, 1, 0, 0, 3, 2, 3, // AL
    0, 3, 1, 1, 1, 3, 3, 3, 0, 1, 0, 0, 0, 1, 1, 1, 0, 0, 3, 2, 3, // ID
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 3, 2, 3, // IN
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // HY
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 0, 0, 0, 0, 1, 1, 0, 0, 3, 2, 3, // BA
    1, 3, 1, 1, 1, 3, 3, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 2, 3, // BB
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 0, 0, 0, 0, 1, 1, 0, 3, 3, 2, 3, // B2
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, // ZW
    0, 3, 1, 1, 1, 3, 3, 3, 0, 0, 1, 1, 0, 1, 1, 1, 0, 0, 3, 2, 3, // CM
    1, 3, 1, 1, 1, 3, 3, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 2, 3, // WJ
};
// clang-format on
static_assert(sizeof LmCodePage::s_arrFullAnalyzeLineBreak >= std::size_t{kPairTableClasses} * kPairTableClasses);

const unsigned char* const LmCodePage::s_ptrAnalyzeLineBreak = s_arrFullAnalyzeLineBreak;

int LmCodePage::LineBreakClass(wchar_t c) {
    // A negative character becomes a large number; among the rows it comes before the first.
    if (codeOf(c) < kLowPartCount)
        return s_LowPartBrakClass[codeOf(c)];
    // The first rows hold the ideographs and the Hangul, most of what is looked up here.
    constexpr std::size_t kRowsOfIdeographs = 3;
    const auto* row = s_HighPartBreakClass.begin();
    const auto* const rare = row + kRowsOfIdeographs;
    const std::int32_t code = signedCodeOf(c);
    while (row != rare && row->last < code)
        ++row;
    if (row == rare)
        row = std::lower_bound(rare, s_HighPartBreakClass.end(), code,
                               [](const LineBreakRow& range, std::int32_t wanted) { return range.last < wanted; });
    return row == s_HighPartBreakClass.end() ? kLineBreakID : row->lineBreakClass;
}

int LmCodePage::AnalyzeLineBreaks(int* /*classes*/, int* /*breaks*/, int /*count*/) {
    return 0;
}
