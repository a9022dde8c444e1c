#pragma once

/// \file
/// Files with standard exceptions and owning pointers.

#include <TqOsBase/Export.h>
#include <TqOsBase/stream/FileStreamBuf.h>
#include <TqOsBase/stream/TqIO.h>

#include <memory>
#include <string>

/// The file buffers for code that uses standard exceptions and owning pointers: one kind of failure at opening, nothing
/// to release by hand, and no end of the process for bytes that are lost in a destructor.
namespace tq {

/// Closes a file buffer and deletes it. Accepted bytes that could not be written, and of which no call has thrown, are
/// reported through TqTracer, with the name of the file: "plan.txt: Write file error!". Call close() where the program
/// itself is to know.
struct StreamCloser {
    /// `stream` is not null. Throws nothing, whatever the tracing does.
    TQ_API void operator()(TqFileStreamBuf* stream) const noexcept;
};

/// Owns a file buffer.
using StreamPointer = std::unique_ptr<TqFileStreamBuf, StreamCloser>;

/// @{
/// Open a file: openInput() a mapped TqFileIStreamBuf for reading, openOutput() a TqFileOStreamBuf for writing, which
/// collects 16,384 bytes, openUpdate() a TqFileIOStreamBuf for both. Never return null. With kShareDenyWrite and
/// kOpenExisting openUpdate() is exclusive: see TqFileStreamBufImpl::open(), which also says what becomes of the name.
///
/// Throw std::system_error for every file that is not opened: what() names the file in UTF-8 and the reason, code() is
/// the system's `errno` in std::generic_category(), and where the system was not asked EISDIR for a directory, EEXIST
/// for kCreateNew of a file that is there, EBUSY for a file that is open exclusively here or locked by another process,
/// EILSEQ for a name with a character outside Unicode, EINVAL for an empty name, one with a character 0 and a
/// disposition that is none. Throw std::bad_alloc.
TQ_API StreamPointer openInput(const std::wstring& name);
TQ_API StreamPointer openOutput(const std::wstring& name, TqIO::CreationDisposition creation = TqIO::kCreateAlways);
TQ_API StreamPointer openUpdate(const std::wstring& name, TqIO::ShareMode share = TqIO::kShareDenyNone,
                                TqIO::CreationDisposition creation = TqIO::kOpenExisting);
/// @}

/// In a handler, `catch (...)` included: what the exception at hand says, in UTF-8. The text of a thrown
/// `const wchar_t*`; of a bare TqException its reason in m_pszFile, of its descendants description(); of a
/// Lumo::ErrorStatus its number with its meaning; what() of a std::exception; else "unknown error". Empty outside a
/// handler.
TQ_API std::string currentErrorText();

} // namespace tq
