#include "base/FileName.h"
#include "base/Hook.h"
#include "base/Utf8.h"
#include "platform/File.h"
#include "stream/StreamBytes.h"

#include <TqOsBase/diag/Exceptions.h>
#include <TqOsBase/diag/TqTracer.h>
#include <TqOsBase/stream/OpenStream.h>

#include <cassert>
#include <cerrno>
#include <exception>
#include <new>
#include <system_error>
#include <typeinfo>

using namespace tq;

namespace {

struct Reason {
    int error;
    const char* detail = ""; // what the system's text for the number does not say
};

// Why there is no file, from what the buffer has stored and the system has said. The buffer swallows
// what open() throws, so the cause is found here by asking the system again.
Reason reasonFor(const std::wstring& name, TqIO::CreationDisposition creation, Lumo::ErrorStatus status, int error) {
    if (name.empty())
        return {EINVAL, " (an empty name)"};
    std::string path;
    if (!detail::toFileName(name.c_str(), path))
        return {EILSEQ};
    if (status == Lumo::kFileLockedByProcess)
        return {EBUSY, " (locked by another process)"};
    if (error != 0)
        return {error};
    if (status == Lumo::kFileNotAccessible)
        return {EBUSY, " (open exclusively in this process)"};
    if (platform::isDirectory(path.c_str()))
        return {EISDIR};
    if (creation == TqIO::kCreateNew)
        return {EEXIST};
    return {creation < TqIO::kCreateNew || creation > TqIO::kTruncateExisting ? EINVAL : ENOMEM};
}

[[noreturn]] void refuse(const std::wstring& name, const char* purpose, const Reason& reason) {
    if (reason.error == ENOMEM)
        throw std::bad_alloc();
    throw std::system_error(reason.error, std::generic_category(),
                            "cannot open " + detail::utf8Of(name.c_str()) + " for " + purpose + reason.detail);
}

// `create` makes the buffer and takes the place for its status.
template <class Create>
StreamPointer openAs(const char* purpose, const std::wstring& name, TqIO::CreationDisposition creation,
                     const Create& create) {
    if (name.find(L'\0') != std::wstring::npos)
        refuse(name, purpose, {EINVAL, " (a name with a character 0)"});
    Lumo::ErrorStatus status = Lumo::kOk;
    errno = 0;
    StreamPointer stream(create(&status));
    const int error = errno;
    if (status != Lumo::kOk || stream->fileName() == nullptr)
        refuse(name, purpose, reasonFor(name, creation, status, error));
    return stream;
}

const char* meaningOf(Lumo::ErrorStatus status) noexcept {
    switch (status) {
    case Lumo::kOk:
        return "success";
    case Lumo::kInvalidDisposition:
        return "no such way to open a file";
    case Lumo::kFileOpenFailed:
        return "the system refused to open the file";
    case Lumo::kFileNotAccessible:
        return "the file is missing, may not be accessed, or is open exclusively";
    case Lumo::kInvalidFileTarget:
        return "a directory, a file that exists already, or one that cannot be emptied";
    case Lumo::kEmptyPath:
        return "an empty path";
    case Lumo::kFileLockedByProcess:
        return "another process has locked the file";
    }
    return "a status of the application";
}

std::string textOf(const wchar_t* text) {
    return text == nullptr ? std::string() : detail::utf8Of(text);
}

// Without memory, or where the hook throws, there is no report. The default hook takes its text for a format: a percent
// sign in a name must stay one.
void traceLoss(const std::wstring& name, const wchar_t* reason) noexcept {
    try {
        std::wstring text = name + L": " + reason + L'\n';
        if (detail::readHook(TqTracer::sm_pfnTraceW) == TqTracer::defaultTraceW) {
            for (std::size_t at = 0; (at = text.find(L'%', at)) != std::wstring::npos; at += 2)
                text.insert(at, 1, L'%');
        }
        TqTracer(L"%ls", text.c_str());
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

// The name as long as the file is open; empty when there is no memory for it.
std::wstring nameOf(const TqFileStreamBuf& stream) noexcept {
    try {
        return stream.fileName() != nullptr ? stream.fileName() : L"a file without a name";
    } catch (const std::bad_alloc&) {
        return {};
    }
}

} // namespace

void tq::StreamCloser::operator()(TqFileStreamBuf* stream) const noexcept {
    assert(stream != nullptr);
    const auto* const file = dynamic_cast<const TqFileStreamBufImpl*>(stream);
    const bool wasReported = file != nullptr && file->m_accepted == TqFileStreamBufImpl::Accepted::kReported;
    const std::wstring name = nameOf(*stream);
    try {
        stream->close();
    } catch (const wchar_t* reason) {
        if (!wasReported)
            traceLoss(name, reason);
    }
    destoryFileIOStreamBuf(stream);
}

StreamPointer tq::openInput(const std::wstring& name) {
    return openAs("reading", name, TqIO::kOpenExisting, [&](Lumo::ErrorStatus* status) {
        return createFileIStreamBuf(name.c_str(), status, TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting);
    });
}

StreamPointer tq::openOutput(const std::wstring& name, TqIO::CreationDisposition creation) {
    return openAs("writing", name, creation, [&](Lumo::ErrorStatus* status) {
        return createFileOStreamBuf(name.c_str(), status, TqIO::kAccessWrite, TqIO::kShareDenyNone, creation,
                                    detail::kWriteBehind);
    });
}

StreamPointer tq::openUpdate(const std::wstring& name, TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    return openAs("update", name, creation, [&](Lumo::ErrorStatus* status) {
        return createFileIOStreamBuf(name.c_str(), status, TqIO::kAccessReadWrite, share, creation);
    });
}

std::string tq::currentErrorText() {
    if (std::current_exception() == nullptr)
        return {};
    try {
        throw;
    } catch (const wchar_t* text) {
        return textOf(text);
    } catch (const TqException& failure) {
        return textOf(typeid(failure) == typeid(TqException) ? failure.m_pszFile : failure.description());
    } catch (Lumo::ErrorStatus status) {
        return "status " + std::to_string(static_cast<int>(status)) + ": " + meaningOf(status);
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return "unknown error";
    }
}
