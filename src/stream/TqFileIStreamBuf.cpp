#include "platform/File.h"
#include "stream/StreamBytes.h"
#include "stream/StreamErrors.h"

#include <TqOsBase/stream/FileStreamBuf.h>

#include <cassert>

using namespace tq;
using detail::kEndOfFile;
using detail::kWriteFileError;
using detail::throwFileError;

TqFileIStreamBuf::TqFileIStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                   TqIO::ShareMode share, TqIO::CreationDisposition creation)
    : TqFileStreamBufImpl(name, status, access, share, creation) {
    if (status != nullptr && *status != Lumo::kOk)
        TqFileStreamBufImpl::close();
    else if (hasFile())
        m_view = platform::mapFile(descriptor(), m_viewLength);
}

TqFileStreamBuf* createFileIStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                      TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    return new TqFileIStreamBuf(name, status, access, share, creation);
}

TqFileIStreamBuf::~TqFileIStreamBuf() {
    closeForGood();
}

void TqFileIStreamBuf::close() {
    if (m_view != nullptr)
        platform::unmapFile(m_view, m_viewLength);
    m_view = nullptr;
    m_viewLength = 0;
    m_viewPosition = 0;
    TqFileStreamBufImpl::close();
}

std::uint64_t TqFileIStreamBuf::tell() const {
    return m_view != nullptr ? m_viewPosition : TqFileStreamBufImpl::tell();
}

std::uint64_t TqFileIStreamBuf::length() const {
    return m_view != nullptr ? m_viewLength : TqFileStreamBufImpl::length();
}

void TqFileIStreamBuf::truncate() {
    throwFileError(detail::kFileInternalError);
}

std::uint64_t TqFileIStreamBuf::seek(std::uint64_t offset, TqIO::SeekType type) {
    if (m_view == nullptr)
        return TqFileStreamBufImpl::seek(offset, type);
    // Each target is compared by what is left in its direction, so that no sum can wrap.
    std::uint64_t start = 0;
    bool isInside = offset <= m_viewLength;
    switch (type) {
    case TqIO::kSeekStart:
        break;
    case TqIO::kSeekForward:
        start = m_viewPosition;
        isInside = offset <= m_viewLength - m_viewPosition;
        break;
    case TqIO::kSeekBackward:
        start = m_viewPosition;
        isInside = offset <= m_viewPosition;
        break;
    case TqIO::kSeekEnd:
        start = m_viewLength;
        break;
    default:
        m_viewPosition = 0;
        return 0;
    }
    if (!isInside)
        throwFileError(detail::kOutOfFile);
    const bool isBackward = type == TqIO::kSeekBackward || type == TqIO::kSeekEnd;
    m_viewPosition = isBackward ? start - offset : start + offset;
    return m_viewPosition;
}

// No bytes, more than there are, or no view.
void TqFileIStreamBuf::readSlowly(unsigned char* buf, std::uint32_t n) {
    assert(m_viewPosition <= m_viewLength);
    if (m_view == nullptr)
        TqFileStreamBufImpl::readBytes(buf, n);
    else if (n != 0)
        throwFileError(kEndOfFile);
}

void TqFileIStreamBuf::getBytes(unsigned char* buf, std::uint32_t n) {
    TqFileIStreamBuf::readBytes(buf, n);
}

void TqFileIStreamBuf::getBytes(std::uint64_t pos, unsigned char* buf, std::uint32_t n) {
    if (m_view == nullptr) {
        TqFileStreamBufImpl::getBytes(pos, buf, n);
        return;
    }
    if (pos > m_viewLength)
        throwFileError(detail::kOutOfFile);
    if (n > m_viewLength - pos)
        throwFileError(kEndOfFile);
    m_viewPosition = pos + n;
    detail::moveBytes(buf, m_view + pos, n);
}

void TqFileIStreamBuf::writeBytes(const unsigned char* /*buf*/, std::uint32_t /*n*/) {
    throwFileError(kWriteFileError);
}

void TqFileIStreamBuf::setBytes(const unsigned char* /*buf*/, std::uint32_t /*n*/) {
    throwFileError(kWriteFileError);
}

void TqFileIStreamBuf::setBytes(std::uint64_t /*pos*/, const unsigned char* /*buf*/, std::uint32_t /*n*/) {
    throwFileError(kWriteFileError);
}
