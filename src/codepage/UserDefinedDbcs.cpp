// The user-defined double-byte characters of LmCodePage: codes of an East Asian code page that were given a private-use
// character.

#include <TqOsBase/codepage/LmCodePage.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::uint16_t kFirstUserDefined = 0xE800;
constexpr std::size_t kSlotCount = 256;

struct UserDefinedDbcs {
    std::uint16_t code = 0; // 0: the slot is free.
    std::int32_t codePage = 0;
    // The same for every slot; stored drawings know no other value.
    std::int16_t unicode = static_cast<std::int16_t>(kFirstUserDefined);
};

constinit std::array<UserDefinedDbcs, kSlotCount> s_arrUserDefinedDBCS{};

// The slot numbered by the low byte of a character in U+E800 to U+E8FF; null for any other.
const UserDefinedDbcs* slotOf(std::uint16_t unit) {
    return (unit & 0xFF00U) == kFirstUserDefined ? &s_arrUserDefinedDBCS[unit & 0x00FFU] : nullptr;
}

} // namespace

bool LmCodePage::DBCSForUserDefinedUnicode(short& dbcs, wchar_t u) {
    const UserDefinedDbcs* slot = slotOf(static_cast<std::uint16_t>(u));
    if (slot == nullptr)
        return false;
    dbcs = static_cast<short>(slot->code);
    return true;
}

bool LmCodePage::UnicodeForUserDefinedDBCS(wchar_t& u, short dbcs, int codePage) {
    const auto code = static_cast<std::uint16_t>(dbcs);
    for (UserDefinedDbcs& slot : s_arrUserDefinedDBCS) {
        if (slot.code == 0 || slot.code == code) {
            slot.code = code;
            slot.codePage = codePage;
            u = slot.unicode;
            return true;
        }
    }
    return false;
}

bool LmCodePage::CodepageForUserDefinedUnicode(int& codePage, short u) {
    const UserDefinedDbcs* slot = slotOf(static_cast<std::uint16_t>(u));
    if (slot == nullptr)
        return false;
    codePage = slot->codePage;
    return true;
}

void LmCodePage::InitUserDefinedDBCSArray() {
    s_arrUserDefinedDBCS.fill({});
}
