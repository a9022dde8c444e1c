#pragma once

#include <TqOsBase/stream/FileStreamBuf.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

/// What the examples need of the file buffers: opening with a clear reason when that fails, and owning.
namespace files {

/// Bytes kept before they are written out, and lines longer than this are met in pieces.
inline constexpr std::size_t kBufferSize = 65536;

struct CloseFile {
    void operator()(TqFileStreamBuf* file) const { destoryFileIOStreamBuf(file); }
};
using File = std::unique_ptr<TqFileStreamBuf, CloseFile>;

/// A mapped input buffer. Throws std::runtime_error with one line that says why not.
File openInput(const std::filesystem::path& path);

/// A write-behind buffer on a new or emptied file. Throws as openInput.
File openOutput(const std::filesystem::path& path);

/// Throws what the buffer throws: a `const wchar_t*`.
void write(TqFileStreamBuf& file, std::string_view text);

/// Closes after a failed write. What is pending cannot be written either, and unlike the destructor close() says so
/// with an exception that can be dropped, since the failure is reported already.
void abandon(TqFileStreamBuf& file);

/// The library's reasons as narrow text; they are plain ASCII.
std::string narrowed(const wchar_t* reason);

} // namespace files
