#pragma once

namespace macho {

/// The number that macOS gives the error that has `number` here, and the way back. Equal for those up to 34 but one.
int errorForProgram(int number);
int errorFromProgram(int number);

} // namespace macho
