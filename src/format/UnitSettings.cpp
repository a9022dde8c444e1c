#include "format/UnitSettings.h"

#include <TqOsBase/format/QMode.h>

constinit LumoAppUnitSets g_appUnits;

void initOsBaseUnits(LumoAppUnitSets& units) {
    g_appUnits = units;
}

namespace tq::detail {

bool isDashBitSet(int flags) {
    return (g_appUnits.flags & kUnitFlagDash) != 0 && (flags & kQFlagIgnoreDash) == 0;
}

} // namespace tq::detail
