#pragma once

namespace macho {

/// @{
/// Called by the program, or where variable arguments are passed otherwise than here, for it.
int openFile(const char* path, int flags, int mode);
int openFileAt(int folder, const char* path, int flags, int mode);
int controlFile(int descriptor, int command, void* argument);
/// @}

} // namespace macho
