#pragma once

/// \file
/// Walking narrow text character by character, escapes decoded.

#include <TqOsBase/Export.h>
#include <TqOsBase/codepage/CodePageId.h>
#include <TqOsBase/containers/TqStringA.h>

/// Walks narrow text (see TqCharMapper) character by character: a plain byte, a `\U+XXXX` escape (U and digits in
/// either case) as the character it names, a `\M+nXXXX` escape as its double-byte code XXXX without n. A backslash that
/// begins neither is a plain byte. Lead bytes would be joined with the byte after them, but TqCharMapper::isLeadByte
/// knows none, so double-byte text comes in single bytes.
///
/// The text is not owned: it must outlive the iterator and stay unchanged. Its first 0 byte ends it, whatever its
/// length; no call reads past that. Pointers are into the text. Only breakSafely throws.
class TQ_API TqAnsiTextIterator {
public:
    /// As init().
    TqAnsiTextIterator(const TqStringA& text, code_page_id id) noexcept;
    ~TqAnsiTextIterator();

    /// Begins anew with this text: current character 0, position at its first byte.
    void init(const TqStringA& text, code_page_id id) noexcept;

    /// Reads the next character and returns it; 0, and the position unmoved, at the end. The escape `\U+0000` gives 0
    /// too, but moves on. An escape that begins before the text's length is read whole, even beyond that length.
    TQ_API unsigned int nextChar() noexcept {
        const auto byte = static_cast<unsigned char>(*m_position);
        if (byte == 0 || byte == '\\' || m_position >= m_end)
            return nextUncommonChar();
        m_characterStart = m_position++;
        m_current = byte;
        return byte;
    }

    /// The character read last; 0 before the first one and after the end.
    unsigned int operator*() const noexcept { return m_current; }
    /// The next byte to read.
    const char* position() const noexcept { return m_position; }
    /// The first byte of the character read last.
    const char* characterStart() const noexcept { return m_characterStart; }

    /// Appends up to `count` digits to the value of the current character and returns it, modulo 2^32; reads no further
    /// than the first byte that is no digit. Letters A to F in either case are digits when `hex` is true. The current
    /// character is not cleared first.
    unsigned int appendDigits(int count, bool hex) noexcept;

    /// The same for exactly `count` bytes, unchecked: letters A to F count 10 to 15 also when `hex` is false, any other
    /// byte counts 0. The terminating 0 is not passed: digits missing there count 0 each.
    unsigned int appendDigitsNoCheck(int count, bool hex) noexcept;

    /// Finds where the text can be cut. The piece begins with the character that is current when this is called. It
    /// reads at least one character more, then on until `maxBytes` bytes lie between the beginning of the piece and the
    /// position.
    ///
    /// Returns 3 when the limit was reached and 1 when the text ended first; `out` is then the piece without the
    /// character that was read last, with room for maxBytes bytes if such a block can be had and the piece
    /// is not empty. Returns 0, and `out` empty although a character was read, when the text ends after that first
    /// one: odd, but relied upon.
    /// A character of value 0 counts as the end. The position stays after the last character read. `out` must not be
    /// the text walked. Throws std::bad_alloc when there is no memory for the piece, `out` then empty.
    int breakSafely(int maxBytes, TqStringA& out);

protected:
    /// Length of a text that only its terminating 0 ends.
    static constexpr int kUnbounded = -1;

    const char* m_start;          ///< The first byte of the text.
    const char* m_position;       ///< The next byte to read.
    int m_length;                 ///< Bytes of the text, or kUnbounded.
    code_page_id m_codePage;      ///< As it was given.
    unsigned int m_current;       ///< The character read last.
    const char* m_characterStart; ///< Its first byte.
    const char* m_end;            ///< After the last byte of the text; its first one where lead bytes are asked for.
    bool m_multiByte;             ///< Whether lead bytes are asked for.

private:
    bool isAtEnd() const noexcept;
    unsigned int nextUncommonChar() noexcept; // an escape, the end, or where lead bytes are asked for
};

/// True when `text` may be walked byte by byte: its code page is not a double-byte one (IsMultiByteCodePage) and no
/// backslash lies within its length.
TQ_API bool TqAnsiTextIteratorNotRequired(const TqStringA& text, code_page_id id) noexcept;
