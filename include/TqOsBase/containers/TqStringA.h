#pragma once

/// \file
/// A narrow string with a code page, shared until it is changed.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/TqMemData.h>

#include <cstddef>
#include <cstdint>

struct TqEmptyStrHeaderA;

/// Header of a narrow string: 40 bytes, ending where the characters begin.
struct TQ_API TqStrHeaderA : TqMemDataHeader {
    /// The base's members, and code page 0.
    constexpr TqStrHeaderA(std::uint32_t count, std::uint64_t used, std::uint64_t capacity,
                           std::uint64_t growStep) noexcept
        : TqMemDataHeader(count, used, capacity, growStep), m_codePage(0), m_reserved(0) {}

    /// The characters of the shared empty string.
    static char* emptyData() noexcept;
    /// Takes over the code page.
    void assignAttributes(const TqStrHeaderA& other) noexcept { m_codePage = other.m_codePage; }

    std::int32_t m_codePage; ///< Windows code page number of the bytes.
    std::int32_t m_reserved; ///< Fills the header up, so that the characters follow without a gap.

    /// The shared empty string: the header and the zero byte that every empty string points at.
    static TqEmptyStrHeaderA sm_EmptyStrA;
};
static_assert(sizeof(TqStrHeaderA) == 40, "the characters follow the header directly");

/// The type of the shared empty string.
struct TQ_API TqEmptyStrHeaderA : TqStrHeaderA {
    constexpr TqEmptyStrHeaderA() noexcept : TqStrHeaderA(1, 0, 0, kDefaultGrowStep), m_terminator(0) {}

    char m_terminator; ///< The empty text.
};

/// Reference-counted, copy-on-write narrow string that remembers the code page of its bytes. The object is one
/// pointer; copies share their characters until one of them is changed, and may be made, read, changed and let go on
/// different threads; one string object belongs to one thread at a time. The text may hold zero bytes; what is read
/// from `const char*` ends at the first one. Every operation that needs a block and cannot have it throws
/// std::bad_alloc and leaves the string as it was; blocks hold at most 2 GiB.
///
/// The instance that exists is TqStringA.
template <class T, class Header>
class TQ_API TQ_SHOWN TqStringT {
public:
    /// The empty text that stands for the characters of every empty string.
    static const T* const kEmptyStr;

    /// The shared empty string, code page 0.
    TqStringT() noexcept = default;
    /// Copies `text` (null is taken as empty) and takes the system's ANSI code page, 0 on these systems. Even from an
    /// empty text the string gets a private header, with capacity 0, to carry the code page.
    TqStringT(const T* text);
    /// Copies share the characters.
    TqStringT(const TqStringT&) noexcept = default;
    TqStringT& operator=(const TqStringT&) noexcept = default;
    /// As assign().
    TqStringT& operator=(const T* text) {
        assign(text);
        return *this;
    }

    /// Takes over the characters of `text`, which may be part of this string. Null or empty text returns the string to
    /// the shared empty one, code page included, and does nothing when it is empty already. Otherwise the code page
    /// stays.
    void assign(const T* text);

    /// The terminated characters; valid until the string is changed or destroyed.
    const T* c_str() const noexcept { return isEmpty() ? kEmptyStr : m_data.data(); }
    /// Bytes before the terminator.
    std::size_t length() const noexcept {
        return isEmpty() ? 0 : static_cast<std::size_t>(m_data.header().m_usedLength - 1);
    }
    /// True for a text without bytes; one that begins with a zero byte is not empty.
    bool isEmpty() const noexcept { return m_data.header().m_usedLength == 0; }
    /// Windows code page number of the bytes.
    int codePage() const noexcept { return m_data.header().m_codePage; }
    /// Bytes that the block has room for, the terminator included.
    std::size_t capacity() const noexcept { return static_cast<std::size_t>(m_data.header().m_capacity); }

    /// A writable private buffer for `count` characters and the terminator, which keeps the present text. Write a
    /// terminated text into it, then call releaseBuffer: until then the string counts as `count` long (or as long as it
    /// was, if that is more), and what lies between the text and that end is undefined. Null, and nothing changed, for
    /// a negative count.
    T* getBuffer(int count);
    /// Ends what getBuffer began: the text is now `count` characters long (-1: up to its first zero byte), cut to what
    /// the block can hold. 0 returns the string to the shared empty one. Nothing happens for other negative counts and
    /// for a string without a block. The block does not shrink, and zero bytes before `count` stay part of the text.
    /// Odd on purpose: the new length is written before a shared string is made private, so that a call without
    /// getBuffer also changes the length that the other holders see.
    void releaseBuffer(int count = -1);

    /// Adds the other's bytes, zero bytes included; the code page stays.
    TqStringT& operator+=(const TqStringT& other) {
        append(other.c_str(), other.length());
        return *this;
    }
    /// Null adds nothing.
    TqStringT& operator+=(const T* text);

    /// Bytewise, as unsigned values; the code page does not take part. Negative, 0 or positive.
    int compare(const TqStringT& other) const noexcept { return compare(other.c_str(), other.length()); }
    /// As above; null is taken as empty.
    int compare(const T* text) const noexcept;

private:
    bool isOwnText(const T* text) const noexcept;
    void append(const T* text, std::size_t count);
    int compare(const T* text, std::size_t count) const noexcept;

    TqMemData<T, Header, TqMemDataAllocator, TqPodReallocator<T>> m_data;
};

/// The narrow string.
using TqStringA = TqStringT<char, TqStrHeaderA>;

extern template class TQ_API TqStringT<char, TqStrHeaderA>;

/// @{
/// Comparisons by TqStringT::compare.
inline bool operator==(const TqStringA& a, const TqStringA& b) noexcept {
    return a.compare(b) == 0;
}
inline bool operator==(const TqStringA& a, const char* b) noexcept {
    return a.compare(b) == 0;
}
inline bool operator==(const char* a, const TqStringA& b) noexcept {
    return b.compare(a) == 0;
}
inline bool operator!=(const TqStringA& a, const TqStringA& b) noexcept {
    return !(a == b);
}
inline bool operator!=(const TqStringA& a, const char* b) noexcept {
    return !(a == b);
}
inline bool operator!=(const char* a, const TqStringA& b) noexcept {
    return !(a == b);
}
inline bool operator<(const TqStringA& a, const TqStringA& b) noexcept {
    return a.compare(b) < 0;
}
inline bool operator<(const TqStringA& a, const char* b) noexcept {
    return a.compare(b) < 0;
}
inline bool operator<(const char* a, const TqStringA& b) noexcept {
    return b.compare(a) > 0;
}

/// @}

/// @{
/// Joins two texts. The result has the left operand's code page.
inline TqStringA operator+(TqStringA a, const TqStringA& b) {
    a += b;
    return a;
}
inline TqStringA operator+(TqStringA a, const char* b) {
    a += b;
    return a;
}
inline TqStringA operator+(const char* a, const TqStringA& b) {
    return TqStringA(a) += b;
}
/// @}
