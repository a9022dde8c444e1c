#include <TqOsBase/codepage/NlsFunctions.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>

#include <iterator>

namespace {

constexpr int kThreadAnsiCodePage = 3;

// Indexed by code_page_id. 28586 (not 28596) stands for ISO 8859-6 in stored drawings.
constexpr int arrAnsiLumoCpMapper[] = {
    0,    20127, 28591, 28592, 28593, 28594, 28595, 28586, 28597, 28598, 28599, 437, 850,  852,   855,  857,
    860,  861,   863,   864,   865,   869,   932,   10000, 10002, 949,   1361,  866, 1250, 1251,  1252, 20936,
    1253, 1254,  1255,  1256,  1257,  874,   932,   936,   949,   950,   1361,  0,   1258, 65001,
};
static_assert(std::size(arrAnsiLumoCpMapper) == kCodePageUtf8 + 1);

} // namespace

int TqCodePageMapper::lumoCpToAnsiCp(code_page_id id) {
    if (id < kCodePageUndefined || id > kCodePageUtf8 || id == kCodePageAscii || arrAnsiLumoCpMapper[id] == 0)
        return kThreadAnsiCodePage;
    return arrAnsiLumoCpMapper[id];
}

code_page_id TqCodePageMapper::ansiCpToLumoCp(int codePage) {
    for (int id = kCodePageUtf8; id > kCodePageUndefined; --id) {
        if (arrAnsiLumoCpMapper[id] == codePage)
            return static_cast<code_page_id>(id);
    }
    return kCodePageUndefined;
}

int TqCodePageMapper::currentSystemAnsiCp() {
    return static_cast<int>(GetACP());
}
