#pragma once

#include <TqOsBase/codepage/CodePageId.h>

namespace tq::detail {

/// An East Asian double-byte script in the numbers of every table that names it. Its position in the list, counted from
/// 1, is its code page index and the digit of its MIF escapes.
struct EastAsianScript {
    int charSet;
    int codePage; ///< 0: Johab has none.
    code_page_id id;
};

inline constexpr EastAsianScript kEastAsianScripts[] = {
    {128, 932, kCodePageJapanese}, {136, 950, kCodePageTraditionalChinese}, {129, 949, kCodePageKorean},
    {130, 0, kCodePageJohab},      {134, 936, kCodePageSimplifiedChinese},
};
inline constexpr int kEastAsianScriptCount = 5;

/// The script of a code page index, null outside 1 to 5.
constexpr const EastAsianScript* scriptOfIndex(int index) {
    return index >= 1 && index <= kEastAsianScriptCount ? &kEastAsianScripts[index - 1] : nullptr;
}

/// The code page index of a charset; 0 for one that is not East Asian.
constexpr int indexOfCharSet(int charSet) {
    for (int index = 1; index <= kEastAsianScriptCount; ++index) {
        if (scriptOfIndex(index)->charSet == charSet)
            return index;
    }
    return 0;
}

/// The code page index of a code page; 0 for one that is not East Asian.
constexpr int indexOfCodePage(int codePage) {
    for (int index = 1; index <= kEastAsianScriptCount; ++index) {
        if (codePage != 0 && scriptOfIndex(index)->codePage == codePage)
            return index;
    }
    return 0;
}

} // namespace tq::detail
