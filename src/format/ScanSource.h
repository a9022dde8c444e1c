#pragma once

#include <cstdint>

/// The reading state of one scan over a wide text in memory. `current` is the look-ahead: read, but not consumed.
struct ScanfSourceBuf {
    static constexpr std::int32_t kEnd = -1;

    bool fromStream;         ///< no text in memory: nothing is read, and the look-ahead stays 0
    bool seenInput;          ///< a character other than white space was read
    std::int32_t current;    ///< the code of the look-ahead, kEnd at the terminating 0
    std::int32_t consumed;   ///< characters before the look-ahead
    const wchar_t* position; ///< the character after the look-ahead, or the terminating 0

    /// Reads the first look-ahead of `text`, which is null for a stream source.
    explicit ScanfSourceBuf(const wchar_t* text, bool isStream);

    /// Consumes the look-ahead and reads the next one; at the end nothing happens.
    void advance();
    /// Makes the character consumed last the look-ahead again; there is one.
    void stepBack();
    bool atEnd() const { return current == kEnd; }
    /// Where the look-ahead stands in the text.
    const wchar_t* here() const { return fromStream || atEnd() ? position : position - 1; }
    /// White space of ASCII, and from 128 on of the current locale.
    bool atSpace() const;
    void skipSpace();

private:
    void readCurrent();
};
