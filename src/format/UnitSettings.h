#pragma once

#include "platform/ThreadLife.h"

#include <TqOsBase/format/LumoAppUnitSets.h>
#include <TqOsBase/format/QMode.h>

#include <atomic>
#include <cstdint>

namespace tq::detail {

/// The calling thread's copy of the process's unit settings. Formatting reads this one alone, so that a text follows
/// one call of initOsBaseUnits from its start to its end, whatever other threads set meanwhile.
struct UnitSettingsCopy {
    LumoAppUnitSets settings;
    std::uint32_t number = 0; ///< Of the settings copied.
};
extern constinit thread_local UnitSettingsCopy t_appUnits TQ_NEAR_THREAD_LOCAL;

/// Number of the process's settings: 2 more with every call of initOsBaseUnits, and odd while one stores them.
extern constinit std::atomic<std::uint32_t> g_appUnitsNumber;

/// Makes the thread's copy that of the settings as they are now.
void copyUnitSettings() noexcept;

/// Brings the thread's copy up to date: to be called when a text begins.
inline void followUnitSettings() noexcept {
    if (t_appUnits.number != g_appUnitsNumber.load(std::memory_order_acquire)) [[unlikely]]
        copyUnitSettings();
}

/// Whether the dash bit of the settings is in force under the Q mode flags.
inline bool isDashBitSet(int flags) {
    return (t_appUnits.settings.flags & kUnitFlagDash) != 0 && (flags & kQFlagIgnoreDash) == 0;
}

/// What a number is shown in: a linear or angular unit mode, with its precision.
struct UnitPair {
    int mode;
    int precision;
};

} // namespace tq::detail
