#pragma once

/// \file
/// Access, share and creation modes, and the ways to move in a stream.

/// The vocabulary of opening files and of moving in streams. The numbers are the ones callers store and pass; values
/// beside the named ones are legal and handled as each function says.
namespace TqIO {

/// What a seek offset is measured from. File buffers read some of them differently: see FileStreamBuf.h.
enum SeekType : int {
    kSeekStart = 0,    ///< position = offset
    kSeekForward = 1,  ///< position = current position + offset
    kSeekBackward = 2, ///< position = current position - offset
    kSeekEnd = 3,      ///< position = length - offset; unmapped files: length + offset
};

/// Bits; other bits are ignored, except that an exclusive open asks for exactly kAccessReadWrite.
enum AccessMode : unsigned int {
    kAccessNone = 0,
    kAccessWrite = 0x40000000U,
    kAccessRead = 0x80000000U,
    kAccessReadWrite = 0xC0000000U,
};

/// Other values are stored and count as "denies something".
enum ShareMode : int {
    kShareDenyWrite = 0x20,
    kShareDenyNone = 0x40,
};

/// What happens to a file that exists, and to one that does not.
enum CreationDisposition : int {
    kCreateNew = 1,        ///< The file must not exist.
    kCreateAlways = 2,     ///< An existing file is emptied.
    kOpenExisting = 3,     ///< The file must exist.
    kOpenAlways = 4,       ///< A missing file is created, an existing one keeps its contents.
    kTruncateExisting = 5, ///< The file must exist and is emptied.
};

} // namespace TqIO
