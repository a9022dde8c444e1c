#pragma once

#include "MachoFile.h"

#include <cstdint>

namespace macho {

/// Where an image says how its frames are left when an exception passes.
struct UnwindSource {
    std::uint8_t* base;          ///< The image.
    std::uint64_t textOffset;    ///< Of the text segment, from the base: functions count from there.
    const std::uint8_t* compact; ///< The compact table.
    Bytes frames;                ///< DWARF records, for what the compact table cannot say; may be empty.
};

/// Writes both sources anew as one table of DWARF records and registers it with the C++ runtime of this system, which
/// does not know the compact form. (One table: the runtime takes tables for disjoint ranges of code.)
void registerUnwindTables(const UnwindSource& source);

} // namespace macho
