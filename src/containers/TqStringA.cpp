#include "platform/SystemCodePage.h"

#include <TqOsBase/containers/TqStringA.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

constinit TqMemDataHeader TqMemDataHeader::sm_EmptyHeader(1, 0, 0, TqMemDataHeader::kDefaultGrowStep);

constinit TqEmptyStrHeaderA TqStrHeaderA::sm_EmptyStrA;

char* TqStrHeaderA::emptyData() noexcept {
    return &sm_EmptyStrA.m_terminator;
}

template <class T, class Header>
const T* const TqStringT<T, Header>::kEmptyStr = "";

template <class T, class Header>
TqStringT<T, Header>::TqStringT(const T* text) {
    assign(text);
    if (m_data.header().isShared() && !m_data.reallocData(0, 0))
        throw std::bad_alloc();
    m_data.header().m_codePage = static_cast<std::int32_t>(tq::platform::kSystemAnsiCodePage);
}

template <class T, class Header>
void TqStringT<T, Header>::assign(const T* text) {
    if (text == nullptr || *text == 0) {
        if (!isEmpty())
            m_data.clear();
        return;
    }
    const std::size_t size = std::strlen(text) + 1;
    if (!isOwnText(text)) {
        m_data.copyBeforeWrite(size);
        std::memcpy(m_data.data(), text, size);
    } else if (m_data.header().isShared()) {
        const TqStringT keeper(*this); // keeps the block that `text` lies in
        m_data.copyBeforeWrite(size);
        std::memcpy(m_data.data(), text, size);
    } else {
        std::memmove(m_data.data(), text, size);
        m_data.copyBeforeWrite(size);
    }
}

template <class T, class Header>
T* TqStringT<T, Header>::getBuffer(int count) {
    if (count < 0)
        return nullptr;
    const bool wasEmpty = isEmpty();
    const std::size_t size = std::max(length(), static_cast<std::size_t>(count)) + 1;
    m_data.copyBeforeWrite(size);
    T* buffer = m_data.data();
    if (wasEmpty)
        buffer[0] = 0;
    buffer[size - 1] = 0;
    return buffer;
}

template <class T, class Header>
void TqStringT<T, Header>::releaseBuffer(int count) {
    if (count < -1)
        return;
    const std::size_t room = capacity() == 0 ? 0 : capacity() - 1;
    const std::size_t length = count == -1 ? (isEmpty() ? 0 : ::strnlen(m_data.data(), room))
                                           : std::min(static_cast<std::size_t>(count), room);
    if (length == 0) {
        if (!isEmpty())
            m_data.clear();
        return;
    }
    const std::uint64_t before = std::exchange(m_data.header().m_usedLength, length + 1);
    if (m_data.header().isShared() && !m_data.reallocData(length + 1, 0)) {
        m_data.header().m_usedLength = before;
        throw std::bad_alloc();
    }
    m_data.data()[length] = 0;
}

template <class T, class Header>
TqStringT<T, Header>& TqStringT<T, Header>::operator+=(const T* text) {
    if (text != nullptr)
        append(text, std::strlen(text));
    return *this;
}

template <class T, class Header>
int TqStringT<T, Header>::compare(const T* text) const noexcept {
    return text == nullptr ? compare(kEmptyStr, 0) : compare(text, std::strlen(text));
}

template <class T, class Header>
bool TqStringT<T, Header>::isOwnText(const T* text) const noexcept {
    const std::less<const T*> before;
    const T* own = m_data.data();
    return !before(text, own) && before(text, own + m_data.header().m_usedLength);
}

template <class T, class Header>
void TqStringT<T, Header>::append(const T* text, std::size_t count) {
    if (count == 0)
        return;
    const std::size_t old = length();
    const bool own = isOwnText(text);
    const std::ptrdiff_t offset = own ? text - m_data.data() : 0;
    m_data.copyBeforeWrite(old + count + 1);
    T* data = m_data.data();
    std::memmove(data + old, own ? data + offset : text, count);
    data[old + count] = 0;
}

template <class T, class Header>
int TqStringT<T, Header>::compare(const T* text, std::size_t count) const noexcept {
    const std::size_t own = length();
    const int order = std::memcmp(c_str(), text, std::min(own, count));
    return order != 0 ? order : (own < count ? -1 : own > count ? 1 : 0);
}

template class TqStringT<char, TqStrHeaderA>;
