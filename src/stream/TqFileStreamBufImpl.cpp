#include "base/ErrnoKeeper.h"
#include "base/FileName.h"
#include "base/ProcessLock.h"
#include "platform/File.h"
#include "platform/FileLock.h"
#include "platform/StaticInit.h"
#include "stream/FileOpenPlan.h"
#include "stream/StreamErrors.h"

#include <TqOsBase/stream/FileStreamBuf.h>

#include <cwchar>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

using namespace tq;
using detail::kEndOfFile;
using detail::kFileInternalError;
using detail::kWriteFileError;
using detail::throwFileError;

namespace {

constexpr long long kRegistryBlockSize = 10;
// A stream without positions, such as a pipe, answers -1 to tell(). Callers seek back to it, some with 32 bits of it: a
// seek to an offset whose low 32 bits are all set fails without an exception.
constexpr std::uint64_t kQuietOffset = 0xFFFFFFFF;

// Some refusals are returned and some are thrown: callers rely on which.
bool isThrown(Lumo::ErrorStatus status) {
    return status == Lumo::kInvalidFileTarget || status == Lumo::kInvalidDisposition;
}

std::unique_ptr<wchar_t[]> copyName(const wchar_t* name) {
    const std::size_t count = std::wcslen(name) + 1;
    auto copy = std::make_unique<wchar_t[]>(count);
    std::wmemcpy(copy.get(), name, count);
    return copy;
}

// Keeps what the system said of the step before.
void releaseLock(int descriptor) noexcept {
    const detail::ErrnoKeeper keeper;
    platform::releaseLock(descriptor);
}

struct HandleCloser {
    void operator()(std::FILE* stream) const noexcept { platform::closeStream(stream); }
};

} // namespace

// Constant-initialised, so in order before any constructor runs; first to register its destruction, so destroyed last.
// Where that order does not hold across libraries (see StaticInit.h) a buffer that closes later finds the list empty,
// and does nothing more with it.
TQ_INIT_FIRST constinit CStringList TqFileStreamBufImpl::m_cstrAlreadyOpenFiles(kRegistryBlockSize);

// Puts the stream's position back at the end of its life; its destructor is noexcept, so that failing there ends the
// process.
class TqFileStreamBufImpl::PositionKeeper {
public:
    explicit PositionKeeper(TqFileStreamBufImpl& owner)
        : m_owner(owner), m_position(owner.TqFileStreamBufImpl::tell()) {}
    PositionKeeper(const PositionKeeper&) = delete;
    PositionKeeper& operator=(const PositionKeeper&) = delete;
    ~PositionKeeper() { m_owner.TqFileStreamBufImpl::seek(m_position, TqIO::kSeekStart); }

private:
    TqFileStreamBufImpl& m_owner;
    std::uint64_t m_position;
};

TqFileStreamBuf::~TqFileStreamBuf() = default;

TqFileIOStreamBuf::~TqFileIOStreamBuf() = default;

TqFileStreamBuf* createFileStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                     TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    return new TqFileStreamBufImpl(name, status, access, share, creation);
}

TqFileStreamBuf* createFileIOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                       TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    return new TqFileIOStreamBuf(name, status, access, share, creation);
}

TqFileStreamBuf* createFileIOStreamBuf(void* handle) {
    return new TqFileIOStreamBuf(handle);
}

void destoryFileIOStreamBuf(TqFileStreamBuf* p) {
    delete p;
}

TqFileStreamBufImpl::TqFileStreamBufImpl(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                         TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    try {
        const Lumo::ErrorStatus result = open(name, access, share, creation);
        if (result != Lumo::kOk && status != nullptr)
            *status = result;
    } catch (...) { // NOLINT(bugprone-empty-catch): the contract; the buffer has no file then
    }
}

TqFileStreamBufImpl::TqFileStreamBufImpl(void* handle) {
    m_stream = static_cast<std::FILE*>(handle);
    if (!hasFile())
        return;
    // What the caller did with the stream is unknown: its bytes go to the file now, and the first write moves first. A
    // stream that cannot be flushed because it only reads gets no error mark.
    if (!platform::flushStream(m_stream) && platform::hasFailed(m_stream))
        m_accepted = Accepted::kLost;
    m_lastOperation = LastOperation::kRead;
    m_descriptor = platform::descriptorOf(m_stream);
}

TqFileStreamBufImpl::~TqFileStreamBufImpl() {
    closeForGood();
}

void TqFileStreamBufImpl::closeForGood() noexcept {
    const bool wasReported = m_accepted == Accepted::kReported;
    try {
        close(); // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall): that of the class whose destructor runs is meant
    } catch (const wchar_t*) {
        if (!wasReported)
            std::terminate();
    }
}

// Brings what the C stream holds to the file. False when that fails. Bytes are accepted by a stream without an error
// mark only; one that is there now tells that they are lost already.
bool TqFileStreamBufImpl::settle() noexcept {
    const bool isFlushed = platform::flushStream(m_stream);
    if (m_accepted == Accepted::kPending)
        m_accepted = isFlushed && !platform::hasFailed(m_stream) ? Accepted::kStored : Accepted::kLost;
    return isFlushed;
}

// Throws `text` for a call that failed, and with it any loss that the failure meant. Of a write that fails nobody knows
// whether it was its own bytes that did not fit or those that waited before them.
void TqFileStreamBufImpl::refuse(const wchar_t* text) {
    if (m_accepted == Accepted::kPending || m_accepted == Accepted::kLost)
        reportLoss();
    throwFileError(text);
}

bool TqFileStreamBufImpl::hasFile() const noexcept {
    return m_stream != nullptr && m_stream != noFile();
}

void TqFileStreamBufImpl::requireFile(const wchar_t* text) const {
    if (!hasFile())
        throwFileError(text);
}

Lumo::ErrorStatus TqFileStreamBufImpl::open(const wchar_t* name, TqIO::AccessMode access, TqIO::ShareMode share,
                                            TqIO::CreationDisposition creation) {
    if (name == nullptr || *name == L'\0')
        throwFileError(detail::kNoFileName);
    std::unique_ptr<wchar_t[]> ownName = copyName(name); // `name` may be this buffer's own, which close() releases
    close(); // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall): while constructing, there is nothing to close

    std::string path;
    if (!detail::toFileName(ownName.get(), path))
        return Lumo::kFileOpenFailed;
    const detail::FileOpenPlan plan = detail::planFileOpen(path.c_str(), access, share, creation);
    if (isThrown(plan.status))
        throw plan.status;
    if (plan.status != Lumo::kOk)
        return plan.status;

    // Until the name is in the registry no other thread may ask for it.
    std::optional<detail::ProcessLock> registryLock;
    if (plan.isExclusive)
        registryLock.emplace();
    // Asked before the file is opened: closing a second stream of it would give up the lock that the first one holds.
    if (plan.isExclusive && m_cstrAlreadyOpenFiles.Find(ownName.get()) != nullptr) {
        m_stream = nullptr;
        return Lumo::kFileNotAccessible;
    }
    std::unique_ptr<std::FILE, HandleCloser> stream(platform::openStream(path.c_str(), plan.mode));
    if (stream == nullptr)
        return Lumo::kFileOpenFailed;
    const int descriptor = platform::descriptorOf(stream.get());
    if (plan.isExclusive) {
        if (platform::isLockedByAnotherProcess(descriptor)) {
            m_stream = nullptr;
            return Lumo::kFileLockedByProcess;
        }
        m_cstrAlreadyOpenFiles.AddTail(ownName.get());
        m_isRegistered = 1;
    }
    platform::takeReadLock(descriptor);
    m_stream = stream.release();
    m_descriptor = descriptor;
    m_name = ownName.release();
    m_shareMode = share;
    return Lumo::kOk;
}

const wchar_t* TqFileStreamBufImpl::fileName() const {
    return m_name;
}

TqIO::ShareMode TqFileStreamBufImpl::shareMode() const {
    return m_shareMode;
}

void* TqFileStreamBufImpl::fileHandle() const {
    return m_stream;
}

void TqFileStreamBufImpl::close() {
    bool isLost = false;
    if (hasFile()) {
        if (m_isDirty)
            settle();
        releaseLock(m_descriptor);
        const bool isClosed = platform::closeStream(m_stream);
        isLost = hasLost() || (m_accepted == Accepted::kStored && !isClosed);
    }
    forget();
    if (isLost)
        throwFileError(kWriteFileError);
}

// The state of a buffer that was never opened.
void TqFileStreamBufImpl::forget() noexcept {
    if (m_isRegistered != 0 && m_name != nullptr) {
        const detail::ProcessLock lock;
        if (__POSITION* entry = m_cstrAlreadyOpenFiles.Find(m_name))
            m_cstrAlreadyOpenFiles.RemoveAt(entry);
    }
    m_stream = noFile();
    delete[] std::exchange(m_name, nullptr);
    m_shareMode = TqIO::ShareMode{};
    m_isDirty = false;
    m_lastOperation = LastOperation::kMove;
    m_accepted = Accepted::kNone;
    m_descriptor = -1;
    m_isRegistered = 0;
}

std::uint64_t TqFileStreamBufImpl::tell() const {
    return hasFile() ? static_cast<std::uint64_t>(platform::tellStream(m_stream)) : 0;
}

std::uint64_t TqFileStreamBufImpl::length() const {
    if (!hasFile())
        return 0;
    const std::uint64_t size = platform::fileSize(m_descriptor);
    if (m_accepted != Accepted::kPending)
        return size;
    const std::int64_t position = platform::tellStream(m_stream);
    return position > 0 && static_cast<std::uint64_t>(position) > size ? static_cast<std::uint64_t>(position) : size;
}

void TqFileStreamBufImpl::truncate() {
    seek(0, TqIO::kSeekEnd);
}

std::uint64_t TqFileStreamBufImpl::seek(std::uint64_t offset, TqIO::SeekType type) {
    requireFile(kFileInternalError);
    auto distance = static_cast<std::int64_t>(offset);
    int whence = SEEK_SET;
    if (type == TqIO::kSeekEnd)
        whence = SEEK_END;
    else if (type == TqIO::kSeekBackward)
        distance = static_cast<std::int64_t>(TqFileStreamBufImpl::tell() - offset);
    else if (type == TqIO::kSeekForward)
        whence = SEEK_CUR;
    const bool isPending = m_accepted == Accepted::kPending;
    if (platform::seekStream(m_stream, distance, whence)) {
        m_lastOperation = LastOperation::kMove;
        if (isPending)
            m_accepted = Accepted::kStored; // moving has emptied the C stream
        return 0;
    }
    if (isPending)
        settle();
    if ((offset & kQuietOffset) != kQuietOffset) // 0xFFFFFFFF and -1 are quiet, 0x7FFFFFFFFFFFFFFE is refused aloud
        refuse(kFileInternalError);
    return ~std::uint64_t{0};
}

void TqFileStreamBufImpl::readBytes(unsigned char* buf, std::uint32_t n) {
    requireFile(kEndOfFile);
    if (m_lastOperation == LastOperation::kWrite && !settle()) // on /dev/full
        refuse(kWriteFileError);
    m_lastOperation = LastOperation::kRead;
    platform::readStream(m_stream, buf, n);
}

void TqFileStreamBufImpl::writeBytes(const unsigned char* buf, std::uint32_t n) {
    requireFile(kWriteFileError);
    if (m_lastOperation == LastOperation::kRead)
        platform::seekStream(m_stream, 0, SEEK_CUR); // refused by pipes, which need no move
    m_lastOperation = LastOperation::kWrite;
    if (hasLost() || !platform::writeStream(m_stream, buf, n))
        refuse(kWriteFileError);
    m_isDirty = true;
    if (n != 0)
        m_accepted = Accepted::kPending;
}

void TqFileStreamBufImpl::readBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) {
    requireFile(kEndOfFile);
    TqFileStreamBuf::readBytes(pos, buf, n);
}

void TqFileStreamBufImpl::writeBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) {
    requireFile(kWriteFileError);
    TqFileStreamBuf::writeBytes(pos, buf, n);
}

void TqFileStreamBufImpl::getBytes(unsigned char* buf, std::uint32_t n) {
    requireFile(kEndOfFile);
    const PositionKeeper keeper(*this);
    TqFileStreamBufImpl::readBytes(buf, n);
}

void TqFileStreamBufImpl::getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) {
    requireFile(kEndOfFile);
    seek(pos, TqIO::kSeekStart);
    readBytes(buf, n);
}

void TqFileStreamBufImpl::setBytes(const unsigned char* buf, std::uint32_t n) {
    requireFile(kWriteFileError);
    const PositionKeeper keeper(*this);
    TqFileStreamBufImpl::writeBytes(buf, n);
    // Moving back writes the bytes out anyway. Done here, a full disk is an error that can be reported.
    if (!settle())
        refuse(kWriteFileError);
}

void TqFileStreamBufImpl::setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) {
    requireFile(kWriteFileError);
    seek(pos, TqIO::kSeekStart);
    writeBytes(buf, n);
}
