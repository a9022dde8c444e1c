#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace tq::platform {

// Everything the stream layer asks of files, so that one place meets the system's peculiarities: interrupted calls,
// 64-bit offsets, directories that open as streams. Nothing here throws.

/// True when the file is there and this user may read and write it as asked; with neither asked, when it is there.
bool canAccess(const char* path, bool toRead, bool toWrite) noexcept;
bool isDirectory(const char* path) noexcept;

enum class Creation {
    kNever,
    kIfMissing,
    kExclusive, ///< A file that is there already is an error.
};

struct OpenMode {
    bool read = false;
    bool write = false;
    bool truncate = false;
    Creation creation = Creation::kNever;
};

/// Opens a stream in binary mode, in one step of the system, not inherited by programs that are started. Null, with
/// `errno`, when the system refuses, and for a directory.
std::FILE* openStream(const char* path, const OpenMode& mode) noexcept;
/// What is written to the stream, which has done nothing yet, collects in `buffer` from now on, `size` bytes that live
/// until the stream is closed; without any, each write becomes one of the system.
void setStreamBuffer(std::FILE* stream, unsigned char* buffer, std::size_t size) noexcept;
/// Closes `stream`; false when bytes that were still in it could not be written. The stream is gone in either case.
bool closeStream(std::FILE* stream) noexcept;
bool flushStream(std::FILE* stream) noexcept;
/// True when writing to `stream` has failed before, in a write, a flush or a move.
bool hasFailed(std::FILE* stream) noexcept;

/// Reads up to `n` bytes and returns how many there were. A failing read leaves no error mark on the stream, so that it
/// is not held against a later write, and the end of the file no mark of the end, so that what is appended is read.
std::size_t readStream(std::FILE* stream, void* buffer, std::size_t n) noexcept;
/// True when all `n` bytes went into the stream, and no write before had failed.
bool writeStream(std::FILE* stream, const void* buffer, std::size_t n) noexcept;

/// `whence` as for fseek. False when the system refuses; the position is as before then.
bool seekStream(std::FILE* stream, std::int64_t offset, int whence) noexcept;
/// -1 where there is no position (a pipe).
std::int64_t tellStream(std::FILE* stream) noexcept;

int descriptorOf(std::FILE* stream) noexcept;
/// Writes to a file or stream of the system, past all C streams; what it refuses is dropped.
void writeDescriptor(int descriptor, const char* bytes, std::size_t n) noexcept;
inline constexpr int kStandardError = 2;
/// Bytes of the file that the system knows of; 0 when it cannot say.
std::uint64_t fileSize(int descriptor) noexcept;

/// Maps a regular file, as long as it is now, for reading and shares its pages. Null, with `length` untouched, when
/// that cannot be done; an empty file is such a case.
unsigned char* mapFile(int descriptor, std::uint64_t& length) noexcept;
void unmapFile(unsigned char* view, std::uint64_t length) noexcept;

} // namespace tq::platform
