// The user-defined double-byte characters of LmCodePage: codes of an East Asian code page that were given a private-use
// character.

#include <TqOsBase/codepage/LmCodePage.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>

namespace {

constexpr std::uint16_t kFirstUserDefined = 0xE800;
constexpr std::size_t kSlotCount = 256;

// Aligned so that it is loaded and stored in one step.
struct alignas(8) UserDefinedDbcs {
    std::int32_t codePage = 0;
    std::uint16_t code = 0; // 0: the slot is free.
    // The same for every slot; stored drawings know no other value.
    std::int16_t unicode = static_cast<std::int16_t>(kFirstUserDefined);
};
static_assert(std::has_unique_object_representations_v<UserDefinedDbcs>); // compared bytewise

constinit std::array<std::atomic<UserDefinedDbcs>, kSlotCount> s_arrUserDefinedDBCS{};
static_assert(std::atomic<UserDefinedDbcs>::is_always_lock_free);

// The slot numbered by the low byte of a character in U+E800 to U+E8FF; nothing for any other.
std::optional<UserDefinedDbcs> slotOf(std::uint16_t unit) {
    if ((unit & 0xFF00U) != kFirstUserDefined)
        return std::nullopt;
    return s_arrUserDefinedDBCS[unit & 0x00FFU].load(std::memory_order_relaxed);
}

} // namespace

bool LmCodePage::DBCSForUserDefinedUnicode(short& dbcs, wchar_t u) {
    const auto slot = slotOf(static_cast<std::uint16_t>(u));
    if (!slot)
        return false;
    dbcs = static_cast<short>(slot->code);
    return true;
}

bool LmCodePage::UnicodeForUserDefinedDBCS(wchar_t& u, short dbcs, int codePage) {
    const auto code = static_cast<std::uint16_t>(dbcs);
    for (auto& slot : s_arrUserDefinedDBCS) {
        UserDefinedDbcs held = slot.load(std::memory_order_relaxed);
        while (held.code == 0 || held.code == code) { // again when another thread has changed the slot meanwhile
            if (slot.compare_exchange_weak(held, {codePage, code, held.unicode}, std::memory_order_relaxed)) {
                u = static_cast<wchar_t>(held.unicode);
                return true;
            }
        }
    }
    return false;
}

bool LmCodePage::CodepageForUserDefinedUnicode(int& codePage, short u) {
    const auto slot = slotOf(static_cast<std::uint16_t>(u));
    if (!slot)
        return false;
    codePage = slot->codePage;
    return true;
}

void LmCodePage::InitUserDefinedDBCSArray() {
    for (auto& slot : s_arrUserDefinedDBCS)
        slot.store({}, std::memory_order_relaxed);
}
