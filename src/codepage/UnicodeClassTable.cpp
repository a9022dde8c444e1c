#include "codepage/UnicodeClassTable.h"

#include "base/CharacterClass.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <iterator>

namespace tq::detail {

namespace {

// In the order of preference. Bits 11 (Johab) and 23 to 28 are set in no mask.
constexpr std::uint16_t kCharSets[] = {0,   238, 204, 186, 161, 162, 177, 178, 163, 222, 134, 130, 129, 136, 128,
                                       256, 257, 258, 259, 260, 261, 262, 263, 263, 263, 263, 263, 257, 264};
static_assert(std::size(kCharSets) == kCharSetBits);

// A charset that is there twice is meant by its lower bit.
constexpr std::uint32_t charSets(std::initializer_list<int> members) {
    std::uint32_t mask = 0;
    for (const int member : members) {
        std::size_t bit = 0;
        while (kCharSets[bit] != member)
            ++bit;
        mask |= std::uint32_t{1} << bit;
    }
    return mask;
}

constexpr std::uint32_t kClassCharSets[] = {
    charSets({}),
    charSets({177}),
    charSets({178}),
    charSets({0, 177, 163}),
    charSets({222}),
    charSets({129}),
    charSets({0, 161, 177, 129}),
    charSets({136}),
    charSets({134, 136}),
    charSets({134, 129, 128}),
    charSets({204, 134, 129, 128}),
    charSets({0, 177, 134, 129, 128}),
    charSets({129, 136, 128}),
    charSets({134, 129, 136, 128}),
    charSets({0, 161, 177, 178, 134, 129, 136, 128}),
    charSets({0, 204, 186, 161, 177, 178, 134, 129, 136, 128}),
    charSets({186, 161, 162, 177, 178, 222, 134, 129, 136, 128}),
    charSets({256}),
    charSets({257}),
    charSets({258}),
    charSets({259}),
    charSets({260}),
    charSets({261}),
    charSets({262}),
    charSets({263}),
    charSets({0, 161, 162, 177, 178, 163, 134, 256, 257, 258, 259, 260, 261, 262, 263}),
    charSets({0, 238, 186, 162, 178, 163, 134, 129, 256, 257, 258, 259, 260, 261, 262, 263}),
    charSets({0, 238, 204, 186, 161, 162, 177, 178, 129, 136, 256, 257, 258, 259, 260, 261, 262, 263}),
    charSets({0, 238, 162, 177, 178, 163, 134, 129, 136, 256, 257, 258, 259, 260, 261, 262, 263}),
    charSets({0, 238, 204, 186, 161, 162, 177, 178, 134, 129, 136, 128, 256, 257, 258, 259, 260, 261, 262, 263}),
    charSets({0, 238, 204, 186, 161, 162, 177, 178, 163, 134, 129, 136, 128, 256, 257, 258, 259, 260, 261, 262, 263}),
    charSets({0, 238, 204, 186, 161, 162, 163, 222, 134, 129, 136, 128, 256, 257, 258, 259, 260, 261, 262, 263}),
    charSets(
        {0, 238, 204, 186, 161, 162, 177, 178, 163, 222, 134, 129, 136, 128, 256, 257, 258, 259, 260, 261, 262, 263}),
};
static_assert(std::size(kClassCharSets) == 33);

// A run reaches from the end of the one before it to its last code unit.
struct ClassRun {
    std::uint32_t last;
    std::uint8_t unicodeClass;
};

constexpr ClassRun kClassRuns[] = {
    {0x003F, 0},  {0x005A, 31}, {0x005F, 0},  {0x007A, 31}, {0x009F, 0},  {0x00FF, 32}, {0x017F, 26}, {0x024F, 25},
    {0x02AF, 0},  {0x02FF, 28}, {0x036F, 0},  {0x03FF, 14}, {0x052F, 10}, {0x058F, 0},  {0x05FF, 1},  {0x06FF, 2},
    {0x08FF, 0},  {0x097F, 24}, {0x09FF, 17}, {0x0A7F, 18}, {0x0AFF, 19}, {0x0B7F, 0},  {0x0BFF, 20}, {0x0C7F, 21},
    {0x0CFF, 22}, {0x0D7F, 23}, {0x0DFF, 0},  {0x0E7F, 4},  {0x1FFF, 0},  {0x206F, 32}, {0x209F, 6},  {0x20CF, 3},
    {0x20FF, 0},  {0x214F, 30}, {0x21FF, 13}, {0x22FF, 15}, {0x23FF, 11}, {0x245F, 0},  {0x24FF, 9},  {0x257F, 29},
    {0x259F, 27}, {0x25FF, 29}, {0x26FF, 13}, {0x27BF, 0},  {0x27EF, 15}, {0x27FF, 13}, {0x28FF, 0},  {0x297F, 13},
    {0x2AFF, 15}, {0x2E7F, 0},  {0x2FDF, 13}, {0x2FEF, 0},  {0x303F, 13}, {0x30FF, 9},  {0x312F, 8},  {0x318F, 5},
    {0x319F, 13}, {0x31BF, 8},  {0x31EF, 0},  {0x31FF, 9},  {0x32FF, 13}, {0x33FF, 12}, {0x4DBF, 13}, {0x4DFF, 0},
    {0x9FFF, 13}, {0xABFF, 0},  {0xD7A3, 5},  {0xDFFF, 0},  {0xF8FF, 16}, {0xFAFF, 12}, {0xFE2F, 0},  {0xFE6F, 7},
    {0xFEFE, 2},  {0xFEFF, 0},  {0xFFEF, 13}, {0xFFFF, 0},
};
static_assert(std::size(kClassRuns) == 76);

constexpr std::size_t kCodeUnits = 0x10000;

constexpr auto kUnicodeClasses = [] {
    std::array<std::uint8_t, kCodeUnits> table{};
    std::size_t unit = 0;
    for (const ClassRun& run : kClassRuns) {
        for (; unit <= run.last; ++unit)
            table[unit] = run.unicodeClass;
    }
    return table;
}();
static_assert(kClassRuns[std::size(kClassRuns) - 1].last == kCodeUnits - 1);

} // namespace

int charSetOfBit(int bit) noexcept {
    return kCharSets[bit];
}

int unicodeClass(wchar_t ch) noexcept {
    const auto unit = codeOf(ch);
    return unit < kCodeUnits ? kUnicodeClasses[unit] : 0;
}

std::uint32_t charSetsOfClass(int unicodeClass) noexcept {
    return kClassCharSets[unicodeClass];
}

} // namespace tq::detail
