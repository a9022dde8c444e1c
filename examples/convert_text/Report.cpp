#include "Report.h"

#include <TqOsBase/codepage/TqCodePageMapper.h>

#include <cstdio>

void Report::printSummary(bool sameBack) const {
    m_notCarried.finish();
    unsigned long long mifTotal = 0;
    std::string byCodePage;
    for (const auto& [id, count] : mifEscapes) {
        mifTotal += count;
        byCodePage += byCodePage.empty() ? " (" : ", ";
        byCodePage +=
            "code page " + std::to_string(TqCodePageMapper::lumoCpToAnsiCp(id)) + ": " + std::to_string(count);
    }
    if (!byCodePage.empty())
        byCodePage += ")";
    std::fprintf(stderr,
                 "lines:            %llu\n"
                 "\\U+ escapes:      %llu\n"
                 "\\M+ escapes:      %llu%s\n"
                 "other characters: %llu\n"
                 "not carried:      %llu\n"
                 "converting back gives the same bytes: %s\n",
                 lines, unicodeEscapes, mifTotal, byCodePage.c_str(), otherCharacters, m_notCarried.count(),
                 sameBack ? "yes" : "no");
}
