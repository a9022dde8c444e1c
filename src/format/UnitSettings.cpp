#include "format/UnitSettings.h"

#include "base/ProcessLock.h"

#include <array>
#include <bit>
#include <cstddef>

namespace tq::detail {

constinit thread_local UnitSettingsCopy t_appUnits TQ_NEAR_THREAD_LOCAL;
constinit std::atomic<std::uint32_t> g_appUnitsNumber = 0;

namespace {

using Words = std::array<std::uint64_t, sizeof(LumoAppUnitSets) / sizeof(std::uint64_t)>;
static_assert(sizeof(Words) == sizeof(LumoAppUnitSets));

// The process's settings, where there were any. With the number they form a sequence lock (Boehm, "Can seqlocks get
// along with programming language memory models?", 2012): who finds the number odd, or changed after reading, reads
// again.
constinit std::array<std::atomic<std::uint64_t>, std::tuple_size_v<Words>> g_appUnits{};

} // namespace

void copyUnitSettings() noexcept {
    Words words;
    std::uint32_t before = 0;
    do {
        before = g_appUnitsNumber.load(std::memory_order_acquire);
        for (std::size_t i = 0; i < words.size(); ++i)
            words[i] = g_appUnits[i].load(std::memory_order_acquire);
    } while (before % 2 != 0 || g_appUnitsNumber.load(std::memory_order_relaxed) != before);
    t_appUnits = {std::bit_cast<LumoAppUnitSets>(words), before};
}

} // namespace tq::detail

void initOsBaseUnits(LumoAppUnitSets& units) {
    using namespace tq::detail;
    const auto words = std::bit_cast<Words>(units);
    const ProcessLock lock;
    const std::uint32_t before = g_appUnitsNumber.load(std::memory_order_relaxed);
    g_appUnitsNumber.store(before + 1, std::memory_order_relaxed);
    for (std::size_t i = 0; i < words.size(); ++i)
        g_appUnits[i].store(words[i], std::memory_order_release);
    g_appUnitsNumber.store(before + 2, std::memory_order_release);
}
