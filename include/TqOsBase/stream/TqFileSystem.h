#pragma once

/// \file
/// Questions about files: what exists, sizes, access.

#include <TqOsBase/Export.h>
#include <TqOsBase/stream/FileStreamBuf.h>
#include <TqOsBase/stream/TqIO.h>

#include <cstdint>

struct stat;

/// Questions about files by wide name, of any length. waccess, wstat, isFileExisting and getFileSize first make the
/// character category of the process's C locale a UTF-8 one, on every call, and leave it so; where there is no such
/// locale the name is converted to UTF-8 all the same. Null and a name with a character outside Unicode are a failure
/// of each. Failures of the system leave `errno`.
class TQ_API TqFileSystem {
public:
    /// access(): 0, or -1 with `errno`.
    static int waccess(const wchar_t* path, int mode);
    /// stat(): 0, or -1 with `errno`. Include <sys/stat.h> to call it.
    static int wstat(const wchar_t* path, struct stat* buf);
    /// False for an empty path, and where access() or stat() fails. Otherwise tests one bit of the file's mode, 0x4000,
    /// so that directories count as not existing, and so do block devices and sockets, whose codes have the bit too.
    static bool isFileExisting(const wchar_t* path);
    /// True when the path names something that is no directory and that this user may read (kAccessRead) and write
    /// (kAccessWrite) as `mode` asks. The name is converted to UTF-8 and the locale is left alone.
    static bool accessFile(const wchar_t* path, TqIO::AccessMode mode);
    /// Size in bytes; all bits set when stat() fails.
    static std::uint64_t getFileSize(const wchar_t* path);

    /// A new output buffer of 16,384 bytes where `access` has kAccessWrite, else a new mapped input buffer; the caller
    /// releases it with destoryFileIOStreamBuf(). Null when opening it stores a status. Where opening throws, such as
    /// for a directory, a buffer without a file comes back (see FileStreamBuf.h). Throws Lumo::kEmptyPath by value for
    /// null and the empty path, and std::bad_alloc.
    static TqFileStreamBuf* createFileBuf(const wchar_t* path, TqIO::AccessMode access, TqIO::ShareMode share,
                                          TqIO::CreationDisposition creation);

    /// @{
    /// Not provided: does nothing, touches none of its arguments and returns 0 of its type.
    static bool isDirectory(const wchar_t* path);
    static bool createFile(const wchar_t* path);
    static bool deleteFile(const wchar_t* path);
    static bool renameFile(const wchar_t* oldPath, const wchar_t* newPath);
    static std::uint64_t getCreationTime(const wchar_t* path);
    static std::uint64_t getAccessingTime(const wchar_t* path);
    static std::uint64_t getModificationTime(const wchar_t* path);
    static std::uint64_t getFileSize(void* handle);
    static bool createDirectory(const wchar_t* path);
    static bool deleteDirectory(const wchar_t* path);
    static bool setCurrentDirectory(const wchar_t* path);
    static int getCurrentDirectory(wchar_t* out);
    static int getOSDirectory(wchar_t* out);
    static int getSystemDirectory(wchar_t* out);
    static int getTempDirectory(wchar_t* out);
    static int getRunDirectory(wchar_t* out);
    static std::uint64_t getDiskAvailableSpace(const wchar_t* path);
    static std::uint64_t getDiskFreeSpace(const wchar_t* path);
    static std::uint64_t getDiskTotalSpace(const wchar_t* path);
    /// @}
};
