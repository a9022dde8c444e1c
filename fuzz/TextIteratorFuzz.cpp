// The text iterator over any bytes: it stays inside the text, moves on with every character, and cuts between
// characters only. The first two bytes of the input choose the code page and how far a piece may reach.

#include "Check.h"

#include <TqOsBase/codepage/TqAnsiTextIterator.h>
#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr std::ptrdiff_t kUnicodeLength = 7;
constexpr std::ptrdiff_t kMifLength = 8;

// Walks a block of exactly the text's size; the length of the string that it stands for may be any.
class Walker : public TqAnsiTextIterator {
public:
    Walker(const std::vector<char>& text, int length, code_page_id id) : TqAnsiTextIterator(TqStringA(), id) {
        m_start = m_position = m_characterStart = text.data();
        m_length = length;
        m_end = m_start + std::max(length, 0);
    }
};

bool equalButForCase(const char* text, const char* written) {
    return std::equal(text, text + std::strlen(written), written,
                      [](char a, char b) { return (a | 0x20) == (b | 0x20); });
}

void checkCharacter(const char* start, std::ptrdiff_t length, unsigned value) {
    char written[kMifLength + 1];
    if (length == 1) {
        fuzz::check(value == static_cast<unsigned char>(*start), "a byte stands for itself");
    } else if (length == kUnicodeLength) {
        std::snprintf(written, sizeof written, "\\U+%04X", value & 0xFFFF);
        fuzz::check(value <= 0xFFFF && equalButForCase(start, written), "an escape names its character");
    } else {
        fuzz::check(length == kMifLength, "no other length");
        std::snprintf(written, sizeof written, "\\M+%c%04X", start[3], value & 0xFFFF);
        fuzz::check(value <= 0xFFFF && equalButForCase(start, written), "an escape names its code");
    }
}

// Returns where the characters begin, and where the last one ends.
std::vector<std::ptrdiff_t> walk(const std::vector<char>& text, int length, code_page_id id) {
    Walker it(text, length, id);
    std::vector<std::ptrdiff_t> starts{0};
    for (;;) {
        const unsigned value = it.nextChar();
        const std::ptrdiff_t read = it.position() - it.characterStart();
        fuzz::check(value == *it, "the character returned is the current one");
        fuzz::check(it.characterStart() - text.data() == starts.back(), "characters follow each other");
        if (read == 0) {
            fuzz::check(value == 0, "nothing is read at the end only");
            return starts;
        }
        checkCharacter(it.characterStart(), read, value);
        starts.push_back(it.position() - text.data());
        fuzz::check(starts.back() < static_cast<std::ptrdiff_t>(text.size()), "the terminator is not passed");
    }
}

void checkPieces(const std::vector<char>& text, const std::vector<std::ptrdiff_t>& starts, int maxBytes,
                 code_page_id id) {
    const TqStringA string(text.data());
    TqAnsiTextIterator it(string, id);
    TqStringA piece;
    int result = 3;
    while (result == 3) {
        const char* mark = it.characterStart();
        const char* before = it.position();
        result = it.breakSafely(maxBytes, piece);
        const bool isEmpty = result == 0;
        fuzz::check(it.position() > before || result != 3, "every piece moves on");
        fuzz::check(std::binary_search(starts.begin(), starts.end(), it.position() - string.c_str()),
                    "a cut lies between characters");
        fuzz::check(std::string(mark, isEmpty ? mark : it.characterStart()) == piece.c_str(), "the piece is the text");
    }
    fuzz::check(result == 0 || result == 1, "the text ends");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto id = static_cast<code_page_id>(size > 0 ? data[0] % 48 : 0);
    const int limit = size > 1 ? data[1] : 0;
    std::vector<char> text(data + std::min<std::size_t>(size, 2), data + size);
    text.push_back(0);

    const int length = static_cast<int>(std::strlen(text.data()));
    const auto whole = walk(text, -1, id);
    fuzz::check(whole.back() == length, "the whole text is read");
    const auto part = walk(text, std::min(limit, length), id);
    fuzz::check(std::equal(part.begin(), part.end(), whole.begin()), "a shorter length ends the same walk sooner");
    fuzz::check(part.back() >= std::min(limit, length), "but not before it");
    checkPieces(text, whole, limit, id);

    Walker digits(text, -1, id);
    while (digits.nextChar() != 0) {
        digits.appendDigits(limit, limit % 2 == 0);
        digits.appendDigitsNoCheck(limit % 5, limit % 2 == 0);
        fuzz::check(digits.position() <= text.data() + length, "digits end with the text");
    }
    const bool isPlain = std::memchr(text.data(), '\\', static_cast<std::size_t>(length)) == nullptr;
    fuzz::check(TqAnsiTextIteratorNotRequired(TqStringA(text.data()), id) == (isPlain && !IsMultiByteCodePage(id)),
                "plain text of a single-byte code page needs no iterator");
    return 0;
}
