#include "Conversion.h"

#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>

namespace {

constexpr std::size_t kUnicodeEscapeLength = 7; // \U+XXXX
constexpr std::size_t kMifEscapeLength = 8;     // \M+nXXXX
constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kMalformed = 0xFFFFFFFF;

bool isSurrogate(char32_t character) {
    return character >= 0xD800 && character <= 0xDFFF;
}

// The character of the \U+XXXX escape that `text` begins with, or kMalformed when it begins with none.
char32_t unicodeEscapeAt(std::string_view text) {
    if (text.size() < kUnicodeEscapeLength || text[0] != '\\' || (text[1] | 0x20) != 'u' || text[2] != '+')
        return kMalformed;
    char32_t value = 0;
    for (const char digit : text.substr(3, 4)) {
        const int lower = digit | 0x20;
        if (digit >= '0' && digit <= '9')
            value = value * 16 + static_cast<char32_t>(digit - '0');
        else if (lower >= 'a' && lower <= 'f')
            value = value * 16 + static_cast<char32_t>(lower - 'a' + 10);
        else
            return kMalformed;
    }
    return value;
}

bool mifEscapeAt(std::string_view text, code_page_id& codePage) {
    wchar_t code = 0;
    return text.size() >= kMifEscapeLength &&
           TqCharConverter::parseMIFString(reinterpret_cast<const unsigned char*>(text.data()), code, codePage);
}

struct Utf8Character {
    char32_t value; // kMalformed: the byte begins no well-formed character
    std::size_t length;
};

Utf8Character utf8At(std::string_view text) {
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
    if ((lead >= 0x80 && lead < 0xC0) || lead > 0xF7 || text.size() < length)
        return {kMalformed, 1};
    char32_t value = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U)
            return {kMalformed, 1};
        value = (value << 6) | (byte(i) & 0x3FU);
    }
    if (value < kSmallest[length - 1] || isSurrogate(value) || value > 0x10FFFF)
        return {kMalformed, 1};
    return {value, length};
}

} // namespace

const std::string& Conversion::convert(std::string_view piece) {
    const bool decoding = m_direction == Direction::kToUtf8;
    m_out.clear();
    m_back.clear();
    if (decoding) {
        countEscaped(piece);
        toUtf8(piece, m_out, &m_report);
        toEscaped(m_out, m_back, nullptr);
    } else {
        toEscaped(piece, m_out, &m_report);
        countEscaped(m_out);
        toUtf8(m_out, m_back, nullptr);
    }
    m_sameBack = m_sameBack && m_back == piece;
    return m_out;
}

// An escape for 0 would end the text, and one for a surrogate has no UTF-8: both stay as they stand.
void Conversion::toUtf8(std::string_view piece, std::string& out, Report* report) {
    std::size_t done = 0;
    std::size_t at = 0;
    while ((at = piece.find_first_of(std::string_view("\\\0", 2), at)) != std::string_view::npos) {
        const char32_t character = unicodeEscapeAt(piece.substr(at));
        const bool stays = character == 0 || (character != kMalformed && isSurrogate(character));
        if (piece[at] != 0 && !stays) {
            ++at;
            continue;
        }
        const std::size_t length = stays ? kUnicodeEscapeLength : 1;
        const std::string kept(piece.substr(at, length));
        appendDecoded(piece.substr(done, at - done), out);
        out += kept;
        if (report != nullptr && stays) {
            report->column += at;
            report->notCarried(kept.c_str(), "has no UTF-8 form, kept as it stands");
            report->column -= at;
        }
        done = at += length;
    }
    appendDecoded(piece.substr(done), out);
    if (report != nullptr)
        report->column += piece.size();
}

// A character above U+FFFF has no escape, and a byte that is not UTF-8 is no character.
void Conversion::toEscaped(std::string_view piece, std::string& out, Report* report) {
    std::size_t done = 0;
    for (std::size_t at = 0; at < piece.size();) {
        const auto [character, length] = utf8At(piece.substr(at));
        if (character == 0 || character > 0xFFFF) {
            appendEncoded(piece.substr(done, at - done), out);
            done = at + length;
            char what[32];
            if (character == 0) {
                out += '\0';
            } else if (character == kMalformed) {
                const unsigned byte = static_cast<unsigned char>(piece[at]);
                appendEscape(byte, out);
                std::snprintf(what, sizeof what, "byte %02X", byte);
                if (report != nullptr)
                    report->notCarried(what, "is not UTF-8, written as the character of the same number");
            } else {
                appendEscape(kReplacement, out);
                std::snprintf(what, sizeof what, "U+%04X", static_cast<unsigned>(character));
                if (report != nullptr)
                    report->notCarried(what, "has no escape, replaced by \\U+FFFD");
            }
        }
        at += length;
        if (report != nullptr)
            ++report->column;
    }
    appendEncoded(piece.substr(done), out);
}

void Conversion::appendDecoded(std::string_view escaped, std::string& out) {
    m_wide.setLogicalLength(0);
    TqCharMapper::multiByteToWideChar(kCodePageUndefined, escaped.data(), static_cast<int>(escaped.size()), m_wide);
    const int count = m_wide.logicalLength() - 1;
    if (count == 0)
        return;
    m_narrow.setLogicalLength(0);
    TqCharMapper::unicodeToUtf8(m_wide.asArrayPtr(), count, m_narrow);
    out.append(m_narrow.asArrayPtr(), static_cast<std::size_t>(m_narrow.logicalLength()) - 1);
}

void Conversion::appendEncoded(std::string_view utf8, std::string& out) {
    if (utf8.empty())
        return;
    // The conversion also reads the byte after the last one, so it gets a terminated copy.
    const std::string text(utf8);
    TqCharMapper::utf8ToUnicode(text.c_str(), static_cast<int>(text.size()), m_wide);
    m_narrow.setLogicalLength(0);
    TqCharMapper::wideCharToMultiByte(kCodePageUndefined, m_wide.asArrayPtr(), m_wide.logicalLength() - 1, m_narrow);
    out.append(m_narrow.asArrayPtr(), static_cast<std::size_t>(m_narrow.logicalLength()) - 1);
}

void Conversion::appendEscape(char32_t character, std::string& out) {
    const wchar_t text[] = {static_cast<wchar_t>(character), 0};
    m_narrow.setLogicalLength(0);
    TqCharMapper::wideCharToMultiByte(kCodePageUndefined, text, 1, m_narrow);
    out.append(m_narrow.asArrayPtr(), static_cast<std::size_t>(m_narrow.logicalLength()) - 1);
}

void Conversion::countEscaped(std::string_view escaped) {
    for (std::size_t at = 0; at < escaped.size();) {
        const std::string_view rest = escaped.substr(at);
        code_page_id codePage = kCodePageUndefined;
        if (unicodeEscapeAt(rest) != kMalformed) {
            ++m_report.unicodeEscapes;
            at += kUnicodeEscapeLength;
        } else if (mifEscapeAt(rest, codePage)) {
            ++m_report.mifEscapes[codePage];
            at += kMifEscapeLength;
        } else {
            if (rest[0] != '\r' && rest[0] != '\n')
                ++m_report.otherCharacters;
            ++at;
        }
    }
}

std::size_t incompleteTail(std::string_view text) {
    const std::size_t last = std::min(text.size(), kMifEscapeLength - 1);
    const std::size_t backslash = text.substr(text.size() - last).find('\\');
    if (backslash != std::string_view::npos)
        return last - backslash;
    for (std::size_t tail = 1; tail <= std::min<std::size_t>(text.size(), 3); ++tail) {
        const unsigned lead = static_cast<unsigned char>(text[text.size() - tail]);
        if (lead >= 0xC0)
            return tail;
        if (lead < 0x80)
            break;
    }
    return 0;
}
