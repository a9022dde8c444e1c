#include "platform/File.h"
#include "stream/StreamBytes.h"
#include "stream/StreamErrors.h"
#include "stream/StreamPosition.h"

#include <TqOsBase/stream/FileStreamBuf.h>

#include <algorithm>
#include <cassert>

using namespace tq;

namespace {

constexpr std::uint64_t kNoPosition = ~std::uint64_t{0};

} // namespace

// After a loss nothing more is appended: the next write takes the slow way and is refused there.
class TqFileOStreamBuf::AppendGuard {
public:
    explicit AppendGuard(TqFileOStreamBuf& owner) : m_owner(owner) {}
    AppendGuard(const AppendGuard&) = delete;
    AppendGuard& operator=(const AppendGuard&) = delete;
    ~AppendGuard() {
        if (m_owner.hasLost())
            m_owner.m_limit = m_owner.m_pending.m_position;
    }

private:
    TqFileOStreamBuf& m_owner;
};

TqFileOStreamBuf::TqFileOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                   TqIO::ShareMode share, TqIO::CreationDisposition creation, unsigned bufferSize)
    : TqFileStreamBufImpl(name, status, access, share, creation) {
    m_pending.reserve(std::min(bufferSize, detail::kWriteBehind));
    if (status != nullptr && *status != Lumo::kOk) {
        TqFileStreamBufImpl::close();
        return;
    }
    // What is pending here goes to the system in one piece. The C library would split it at the ends of its own buffer,
    // which only reading needs.
    if (hasFile() && (access & TqIO::kAccessReadWrite) == TqIO::kAccessWrite)
        platform::setStreamBuffer(static_cast<std::FILE*>(fileHandle()), nullptr, 0);
}

TqFileStreamBuf* createFileOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                      TqIO::ShareMode share, TqIO::CreationDisposition creation, unsigned bufferSize) {
    return new TqFileOStreamBuf(name, status, access, share, creation, bufferSize);
}

TqFileOStreamBuf::~TqFileOStreamBuf() {
    closeForGood();
}

// The blocks collect in the storage after the pending bytes, which from then on need no more and so do not move.
bool TqFileOStreamBuf::setBlockSize(std::uint32_t size) {
    constexpr std::uint32_t kLargest = 1 << 20;
    constexpr std::uint32_t kUnit = 4096;
    const std::uint32_t block = std::min(size, kLargest) / kUnit * kUnit;
    if (block == 0 || !hasFile() || !isUntouched() || m_limit != 0)
        return false;
    m_pending.reserve(detail::kWriteBehind + block);
    unsigned char* const buffer = m_pending.buffer() + detail::kWriteBehind;
    platform::setStreamBuffer(static_cast<std::FILE*>(fileHandle()), buffer, block);
    return true;
}

void TqFileOStreamBuf::flushPending() {
    const std::uint32_t count = m_pending.m_position;
    assert(m_limit == count || (m_limit == detail::kWriteBehind && m_pending.length() == m_limit && count < m_limit));
    if (count == 0)
        return;
    try {
        TqFileStreamBufImpl::writeBytes(m_pending.buffer(), count);
    } catch (const wchar_t*) {
        reportLoss();
        throw;
    }
    m_pending.rewind();
}

void TqFileOStreamBuf::dropPending() {
    m_pending.rewind();
    m_limit = 0;
}

void TqFileOStreamBuf::close() {
    try {
        flushPending();
    } catch (const wchar_t*) {
        dropPending();
        try {
            TqFileStreamBufImpl::close();
        } catch (const wchar_t*) { // NOLINT(bugprone-empty-catch): the same failure again
        }
        throw;
    }
    dropPending();
    TqFileStreamBufImpl::close();
}

std::uint64_t TqFileOStreamBuf::tell() const {
    const std::uint64_t position = TqFileStreamBufImpl::tell();
    return position == kNoPosition ? position : position + m_pending.tell();
}

std::uint64_t TqFileOStreamBuf::length() const {
    const std::uint64_t size = TqFileStreamBufImpl::length();
    const std::uint64_t position = tell();
    return position == kNoPosition ? size : std::max(size, position);
}

std::uint64_t TqFileOStreamBuf::seek(std::uint64_t offset, TqIO::SeekType type) {
    const AppendGuard guard(*this);
    flushPending();
    return TqFileStreamBufImpl::seek(offset, type);
}

void TqFileOStreamBuf::readBytes(unsigned char* buf, std::uint32_t n) {
    const AppendGuard guard(*this);
    flushPending();
    TqFileStreamBufImpl::readBytes(buf, n);
}

// What does not fit into what is pending, and no bytes.
void TqFileOStreamBuf::writeSlowly(const unsigned char* buf, std::uint32_t n) {
    requireFile(detail::kWriteFileError);
    if (hasLost() || platform::hasFailed(static_cast<std::FILE*>(fileHandle())))
        detail::throwFileError(detail::kWriteFileError);
    const AppendGuard guard(*this);
    if (n > detail::kWriteBehind - m_pending.m_position)
        flushPending();
    if (n > detail::kWriteBehind) {
        dropPending(); // none are left; without room the next write comes here too, and is refused if this one is
        TqFileStreamBufImpl::writeBytes(buf, n);
        return;
    }
    m_pending.resize(detail::kWriteBehind);
    m_limit = detail::kWriteBehind;
    const std::uint32_t pending = m_pending.m_position;
    m_pending.setBytes(pending, buf, n);
    m_pending.moveTo(pending + n);
}

void TqFileOStreamBuf::getBytes(unsigned char* buf, std::uint32_t n) {
    const AppendGuard guard(*this);
    flushPending();
    TqFileStreamBufImpl::getBytes(buf, n);
}

void TqFileOStreamBuf::getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) {
    const AppendGuard guard(*this);
    flushPending();
    TqFileStreamBufImpl::getBytes(pos, buf, n);
}

void TqFileOStreamBuf::setBytes(const unsigned char* buf, std::uint32_t n) {
    TqFileOStreamBuf::setBytes(tell(), buf, n);
}

// A run that is wholly pending, such as a header that is completed late, is changed in memory; any other place is
// reached through the file.
void TqFileOStreamBuf::setBytes(std::uint64_t pos, const unsigned char* buf, std::uint32_t n) {
    requireFile(detail::kWriteFileError);
    const std::uint64_t pending = m_pending.tell();
    const std::uint64_t pendingStart = TqFileStreamBufImpl::tell();
    if (!hasLost() && pending != 0 && pendingStart != kNoPosition && pos >= pendingStart &&
        pos - pendingStart <= pending && n <= pending - (pos - pendingStart)) {
        m_pending.setBytes(pos - pendingStart, buf, n);
        return;
    }
    const AppendGuard guard(*this);
    flushPending();
    if (pos > TqFileStreamBufImpl::length())
        detail::throwOutOfStreamBuffer();
    const std::uint64_t before = TqFileStreamBufImpl::tell();
    TqFileStreamBufImpl::seek(pos, TqIO::kSeekStart);
    detail::thenReturnTo(*this, before, [&] { TqFileStreamBufImpl::setBytes(buf, n); });
}
