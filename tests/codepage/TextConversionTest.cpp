#include "codepage/Escapes.h"
#include "codepage/TextKernels.h"
#include "reference/GuardedBuffer.h"
#include "reference/TextConversionReference.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

namespace detail = tq::detail;

constexpr std::size_t kCapacity = 2048;
constexpr std::size_t kLongestText = 70; // Several steps of every width, with every tail.

template <class Char>
std::basic_string<Char> contents(const TqVector<Char>& vector) {
    return vector.isEmpty()
               ? std::basic_string<Char>()
               : std::basic_string<Char>(vector.asArrayPtr(), static_cast<std::size_t>(vector.logicalLength()));
}

std::wstring widened(const std::string& text) {
    std::wstring wide;
    for (const char c : text)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}

// Every byte value but 0 and the backslash, in an order that puts high ones everywhere.
std::string filler(std::size_t length) {
    std::string text;
    for (unsigned i = 0; text.size() < length; ++i) {
        const auto byte = static_cast<char>(i * 37 + 65);
        if (byte != 0 && byte != '\\')
            text += byte;
    }
    return text;
}

// Whole escapes, broken ones, and runs of backslashes.
const std::string kPieces[] = {"",          "\\U+4E2D",     "\\u+00e9",       "\\U+0000",         "\\U+005C",
                               "\\M+18140", "\\m+5b0a1",    "\\M+10041",      "\\M+2007F",        "\\M+30080",
                               "\\M+40000", "\\M+61234",    "\\U+00G1",       "\\U+12",           "\\U",
                               "\\",        "\\M+1",        "\\M+1814",       "\\U-1234",         "\\\\U+0041",
                               "\\\\\\",    "\\U+\\U+0042", "\\M+1\\M+10043", "\\M+10044\\U+0045"};

std::vector<int> interestingLengths(std::size_t offset, std::size_t piece, std::size_t total) {
    std::vector<int> lengths = {0, 1, static_cast<int>(total), static_cast<int>(total) + 9, INT_MAX};
    for (std::size_t i = offset; i <= offset + piece; ++i)
        lengths.push_back(static_cast<int>(i));
    return lengths;
}

class TextConversion : public testing::Test {
protected:
    void checkNarrowToWide(const char* src, int length) {
        const std::wstring expected = reference::narrowToWide(src, length);
        TqVector<wchar_t> out;
        TqCharMapper::multiByteToWideChar(kCodePageWestern, src, length, out);
        ASSERT_EQ(contents(out), expected + L'\0') << "length " << length;
        if (length <= 0)
            return;
        const char* end = detail::endBehindLastEscape(src, src + ::strnlen(src, static_cast<std::size_t>(length)));
        for (const auto form : {detail::plain::narrowToWide, detail::word::narrowToWide, detail::wide::narrowToWide}) {
            wchar_t* room = m_wide.last(static_cast<std::size_t>(end - src) + 1);
            wchar_t* written = form(src, end, room);
            ASSERT_EQ(std::wstring(room, written), expected) << "length " << length;
        }
    }

    void checkWideToNarrow(const wchar_t* src, int length) {
        const std::string expected = reference::wideToNarrow(src, length);
        TqVector<char> out;
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, src, length, out);
        ASSERT_EQ(contents(out), expected + '\0') << "length " << length;
        if (length <= 0)
            return;
        const wchar_t* end = detail::endBehindLastEscape(src, src + ::wcsnlen(src, static_cast<std::size_t>(length)));
        for (const auto form : {detail::plain::wideToNarrow, detail::word::wideToNarrow, detail::wide::wideToNarrow}) {
            char* room = m_narrow.last(expected.size() + 1);
            char* written = form(src, end, room);
            ASSERT_EQ(std::string(room, written), expected) << "length " << length;
        }
    }

    reference::GuardedBuffer<char> m_narrowSource{kCapacity};
    reference::GuardedBuffer<wchar_t> m_wideSource{kCapacity};
    reference::GuardedBuffer<char> m_narrow{kCapacity};
    reference::GuardedBuffer<wchar_t> m_wide{kCapacity};
};

TEST_F(TextConversion, NarrowToWideAtEveryOffsetAndLength) {
    const std::string text = filler(kLongestText);
    for (const std::string& piece : kPieces) {
        for (std::size_t offset = 0; offset + piece.size() <= kLongestText; ++offset) {
            // Nothing behind the piece, a little, and enough for another step.
            for (const std::size_t rest : {std::size_t{0}, std::size_t{3}, std::size_t{17}}) {
                const std::string whole = text.substr(0, offset) + piece + text.substr(offset, rest);
                const char* src = m_narrowSource.place(whole.c_str(), whole.size() + 1);
                for (const int length : interestingLengths(offset, piece.size(), whole.size()))
                    ASSERT_NO_FATAL_FAILURE(checkNarrowToWide(src, length));
            }
        }
    }
}

TEST_F(TextConversion, WideToNarrowAtEveryOffsetAndLength) {
    std::wstring text = widened(filler(kLongestText));
    const wchar_t special[] = {
        127, 128, 0xFFFF, 0x10000, 0x1F600, static_cast<wchar_t>(-1), static_cast<wchar_t>(INT_MIN)};
    for (std::size_t i = 0; i < text.size(); i += 9)
        text[i] = special[i / 9 % std::size(special)];
    const std::wstring ascii(kLongestText, L'a');
    for (const std::wstring& around : {text, ascii}) {
        for (const std::string& narrowPiece : kPieces) {
            const std::wstring piece = widened(narrowPiece);
            for (std::size_t offset = 0; offset + piece.size() <= kLongestText; ++offset) {
                for (const std::size_t rest : {std::size_t{0}, std::size_t{3}, std::size_t{17}}) {
                    const std::wstring whole = around.substr(0, offset) + piece + around.substr(offset, rest);
                    const wchar_t* src = m_wideSource.place(whole.c_str(), whole.size() + 1);
                    for (const int length : interestingLengths(offset, piece.size(), whole.size()))
                        ASSERT_NO_FATAL_FAILURE(checkWideToNarrow(src, length));
                }
            }
        }
    }
}

TEST_F(TextConversion, ReadsNothingBehindTheLengthOfAnUnterminatedText) {
    for (std::size_t length = 1; length <= kLongestText; ++length) {
        for (const std::string& tail : {std::string(), std::string("\\U+4E2D"), std::string("\\M+18140")}) {
            const std::string text = filler(length) + tail;
            ASSERT_NO_FATAL_FAILURE(
                checkNarrowToWide(m_narrowSource.place(text.data(), text.size()), static_cast<int>(text.size())));
            const std::wstring wide = widened(text);
            ASSERT_NO_FATAL_FAILURE(
                checkWideToNarrow(m_wideSource.place(wide.data(), wide.size()), static_cast<int>(wide.size())));
        }
    }
}

TEST_F(TextConversion, EveryCharacterAlone) {
    for (int byte = 1; byte < 256; ++byte) {
        const char text[] = {static_cast<char>(byte), '\0'};
        ASSERT_NO_FATAL_FAILURE(checkNarrowToWide(m_narrowSource.place(text, 2), 1));
    }
    for (int c = 1; c < 0x10100; ++c) {
        const wchar_t text[] = {static_cast<wchar_t>(c), L'\0'};
        ASSERT_NO_FATAL_FAILURE(checkWideToNarrow(m_wideSource.place(text, 2), 1));
    }
}

// Sizes are measured a stretch at a time: texts around whole stretches, with characters of every size at the joints.
TEST(LongTexts, ConvertLikeShortOnes) {
    for (const std::size_t length : {2047U, 2048U, 2049U, 4096U, 10000U}) {
        std::wstring text(length, L'a');
        for (std::size_t i = 0; i < length; i += 31)
            text[i] = static_cast<wchar_t>(0x70 + i * 13);
        for (const int taken : {static_cast<int>(length) - 1, static_cast<int>(length), INT_MAX}) {
            TqVector<char> narrow;
            TqCharMapper::wideCharToMultiByte(kCodePageWestern, text.c_str(), taken, narrow);
            const std::string expected = reference::wideToNarrow(text.c_str(), taken);
            ASSERT_EQ(contents(narrow), expected + '\0') << length;
            TqVector<wchar_t> wide;
            TqCharMapper::multiByteToWideChar(kCodePageWestern, expected.c_str(), INT_MAX, wide);
            ASSERT_EQ(contents(wide), reference::narrowToWide(expected.c_str(), INT_MAX) + L'\0') << length;
            TqVector<char> utf8;
            TqCharMapper::unicodeToUtf8(text.c_str(), taken, utf8);
            ASSERT_EQ(contents(utf8), reference::unicodeToUtf8(text.c_str(), taken) + '\0') << length;
        }
    }
}

TEST(NarrowToWide, KnownResults) {
    struct Row {
        std::string text;
        int length;
        std::wstring expected;
    };
    using namespace std::string_literals;
    const Row rows[] = {
        {"A\\U+00e9B", 9, L"A\u00E9B\0"s},
        {"\\U+00G1", 7, L"\\U+00G1\0"s},
        {"\\M+18140", 8, L"\\M+18140\0"s},
        {"\\M+10041", 8, L"A\0"s},
        {"\\M+18140", 1, L"\\M+18140\0"s}, // begins before the end
        {"x\\U+4E2Dy", 2, L"x\u4E2D\0"s},
        {"\xE9", 1, L"\u00E9\0"s},
        {"ab\0cd"s, 5, L"ab\0"s},
        {"abc", 0, L"\0"s},
        {"abc", -4, L"\0"s},
        {"abc", INT_MIN, L"\0"s},
        {"\\U+D83D\\U+DE00", 14, L"\xD83D\xDE00\0"s}, // units are not joined
    };
    for (const Row& row : rows) {
        for (const int page : {0, 1, 30, 38, 45, 46, -1}) {
            TqVector<wchar_t> out;
            TqCharMapper::multiByteToWideChar(static_cast<code_page_id>(page), row.text.c_str(), row.length, out);
            EXPECT_EQ(contents(out), row.expected) << row.text << " page " << page;
            if (page == kCodePageUtf8)
                continue;
            TqVector<wchar_t> flagged;
            TqCharMapper::multiByteToWideChar(static_cast<code_page_id>(page), 8U, row.text.c_str(), row.length,
                                              flagged);
            EXPECT_EQ(contents(flagged), row.expected) << row.text << " page " << page;
        }
    }
    TqVector<wchar_t> out;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, nullptr, 5, out);
    EXPECT_EQ(contents(out), L"\0"s);
}

TEST(NarrowToWide, Utf8PageTakesOneWellFormedCharacter) {
    struct Row {
        const char* text;
        wchar_t expected;
    };
    const Row rows[] = {
        {"A", L'A'},
        {"\xC3\xA9", L'\u00E9'},
        {"\xE4\xB8\xAD", L'\u4E2D'},
        {"\xF0\x9F\x98\x80", L'\U0001F600'},
        {"", L'?'},
        {"AB", L'?'},
        {"\xC3\xA9\xC3\xA9", L'?'},
        {"\xE4\xB8", L'?'},
        {"\xC0\x80", L'?'},
        {"\xED\xA0\x80", L'?'},
        {"\xF4\x90\x80\x80", L'?'},
        {"\x80", L'?'},
        {"\\U+4E2D", L'?'},
        {nullptr, L'?'},
        {"\xE4\xB8\xAD ", L'?'},
        {"\xF0\x9F\x98\x80\x80", L'?'},
    };
    for (const Row& row : rows) {
        for (const int length : {-1, 0, 1, 100}) {
            TqVector<wchar_t> out;
            out.append(L'<');
            TqCharMapper::multiByteToWideChar(kCodePageUtf8, 0U, row.text, length, out);
            EXPECT_EQ(contents(out), (std::wstring{L'<', row.expected})) << "no terminator; length " << length;
        }
    }
}

TEST(WideToNarrow, KnownResults) {
    struct Row {
        std::wstring text;
        int length;
        std::string expected;
    };
    using namespace std::string_literals;
    const Row rows[] = {
        {L"\u00E9", 1, "\\U+00E9\0"s},
        {L"\\U+4E2D", 7, "\\U+4E2D\0"s},
        {L"\\u+4e2d", 3, "\\u+4e2d\0"s}, // begins before the end, keeps its case
        {L"\\M+61234", 8, "\\M+61234\0"s},
        {L"\\M+61234", 3, "\\M+\0"s},
        {L"\\m+18140", 1, "\\m+18140\0"s},
        {L"\U0001F600", 1, "\\U+F600\0"s},
        {std::wstring(1, static_cast<wchar_t>(-191)), 1, "A\0"s}, // a negative character is its low byte
        {L"ab\0cd"s, 5, "ab\0"s},
        {L"\0cd"s, 3, "\0"s},
        {L"abc", 0, "\0"s},
        {L"abc", INT_MIN, "\0"s},
    };
    for (const Row& row : rows) {
        for (const int page : {0, 30, 45, 46, -1}) {
            TqVector<char> out;
            TqCharMapper::wideCharToMultiByte(static_cast<code_page_id>(page), row.text.c_str(), row.length, out);
            EXPECT_EQ(contents(out), row.expected);
        }
    }
    TqVector<char> out;
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, nullptr, 5, out);
    EXPECT_EQ(contents(out), "\0"s);
}

TEST(TextConversionOutput, IsAppendedAndLeavesSharersAlone) {
    TqVector<wchar_t> wide;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, "one", 3, wide);
    const TqVector<wchar_t> sharer = wide;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, "\\U+0032", 7, wide);
    using namespace std::string_literals;
    const std::wstring first = L"one\0"s;
    EXPECT_EQ(contents(wide), first + L"2\0"s);
    EXPECT_EQ(contents(sharer), first);

    TqVector<char> narrow;
    narrow.setPhysicalLength(64); // room to write in place, if it were not shared
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"one", 3, narrow);
    const TqVector<char> narrowSharer = narrow;
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"\u4E2D", 1, narrow);
    const std::string narrowFirst = "one\0"s;
    EXPECT_EQ(contents(narrow), narrowFirst + "\\U+4E2D\0"s);
    EXPECT_EQ(contents(narrowSharer), narrowFirst);
}

TEST(TextConversionOutput, RefusesMoreThanItCanCount) {
    TqVector<char> full;
    full.setLogicalLength(INT_MAX);
    EXPECT_THROW(TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"", 0, full), std::length_error);
    EXPECT_THROW(TqCharMapper::unicodeToUtf8(L"\u4E2D", 1, full), std::length_error);
    EXPECT_EQ(full.logicalLength(), INT_MAX);
}

TEST(TextConversionOutput, MayHoldTheSource) {
    // Once so that it must grow and once so that it need not.
    for (const int slots : {0, 400}) {
        const std::wstring text = L"held \\U+4E2D in the vector itself \u4E2D " + std::wstring(90, L'x');
        TqVector<char> narrow;
        narrow.setPhysicalLength(slots * 8);
        const auto bytes = static_cast<int>((text.size() + 1) * sizeof(wchar_t));
        narrow.setLogicalLength(bytes);
        std::memcpy(narrow.asArrayPtr(), text.c_str(), static_cast<std::size_t>(bytes));
        const std::string before = contents(narrow);
        const auto* wideSource =
            reinterpret_cast<const wchar_t*>(static_cast<const TqVector<char>&>(narrow).asArrayPtr());
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, wideSource, INT_MAX, narrow);
        EXPECT_EQ(contents(narrow), before + reference::wideToNarrow(text.c_str(), INT_MAX) + '\0');

        const std::string source = "held \\U+4E2D here " + std::string(91, 'y');
        TqVector<wchar_t> wide;
        wide.setPhysicalLength(slots);
        wide.setLogicalLength(static_cast<int>(source.size() / sizeof(wchar_t) + 1));
        std::memcpy(wide.asArrayPtr(), source.c_str(), source.size() + 1);
        const TqVector<wchar_t>& held = wide;
        const auto* narrowSource = reinterpret_cast<const char*>(held.asArrayPtr());
        TqVector<wchar_t> replaced(wide);
        TqCharMapper::utf8ToUnicode(reinterpret_cast<const char*>(std::as_const(replaced).asArrayPtr()), 0, replaced);
        EXPECT_EQ(contents(replaced), widened(source) + L'\0');
        const std::wstring wideBefore = contents(wide);
        TqCharMapper::multiByteToWideChar(kCodePageWestern, narrowSource, INT_MAX, wide);
        EXPECT_EQ(contents(wide), wideBefore + reference::narrowToWide(source.c_str(), INT_MAX) + L'\0');
        TqCharMapper::utf8ToUnicode(reinterpret_cast<const char*>(held.asArrayPtr()), 0, wide);
        EXPECT_EQ(contents(wide), widened(source) + L'\0');
    }
}

} // namespace
