#include "codepage/CharSetLanguage.h"

#include "codepage/LcidCharSetTable.h"

namespace tq::detail {

namespace {

constexpr int kFirstReserved = 239;
constexpr int kLastReserved = 255;

struct CharSetLcid {
    int charSet;
    std::uint16_t lcid;
};

// The Indic rows deliberately do not invert the language table: 0x0446 has charset 257 there, and Bengali (256) has no
// row here.
constexpr CharSetLcid kCharSetLcids[] = {
    {0, 0x0409},   {128, 0x0411}, {129, 0x0412}, {134, 0x0804}, {136, 0x0404}, {161, 0x0408},
    {162, 0x041F}, {163, 0x042A}, {177, 0x040D}, {178, 0x0401}, {186, 0x0425}, {204, 0x0419},
    {222, 0x041E}, {238, 0x0405}, {257, 0x0447}, {258, 0x0449}, {259, 0x044A}, {260, 0x044B},
    {261, 0x044C}, {262, 0x044E}, {263, 0x0446}, {264, 0x0448},
};

} // namespace

std::uint16_t lcidOfCharSet(int charSet, std::uint16_t systemLcid) noexcept {
    // No language of the table has a reserved charset, so one replacement is enough.
    if (charSet >= kFirstReserved && charSet <= kLastReserved)
        charSet = charSetOfLcid(systemLcid).value_or(1);
    for (const CharSetLcid& row : kCharSetLcids) {
        if (row.charSet == charSet)
            return row.lcid;
    }
    return systemLcid;
}

} // namespace tq::detail
