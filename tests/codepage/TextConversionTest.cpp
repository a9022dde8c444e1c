#include "codepage/Escapes.h"
#include "codepage/TextKernels.h"
#include "reference/GuardedBuffer.h"
#include "reference/KernelChoice.h"
#include "reference/TextConversionReference.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <array>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace {

namespace detail = tq::detail;
using namespace std::string_literals;

[[maybe_unused]] const bool kIsChosen = reference::chooseKernels();

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

// The four conversions: the inner loop, the function, what becomes of a vector that holds '#', and the end of the text
// that the inner loop is given (null: none).

struct NarrowToWide {
    static constexpr bool kReplaces = false;
    static constexpr auto kForm = &detail::TextKernels::narrowToWide;
    static void convert(const char* src, int length, TqVector<wchar_t>& out) {
        TqCharMapper::multiByteToWideChar(kCodePageWestern, src, length, out);
    }
    static std::wstring expected(const char* src, int length) {
        return L'#' + reference::narrowToWide(src, length) + L'\0';
    }
    static const char* end(const char* src, int length) {
        if (length <= 0)
            return nullptr;
        return detail::endAfterLastEscape(src, src + ::strnlen(src, static_cast<std::size_t>(length)));
    }
};

struct WideToNarrow {
    static constexpr bool kReplaces = false;
    static constexpr auto kForm = &detail::TextKernels::wideToNarrow;
    static void convert(const wchar_t* src, int length, TqVector<char>& out) {
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, src, length, out);
    }
    static std::string expected(const wchar_t* src, int length) {
        return '#' + reference::wideToNarrow(src, length) + '\0';
    }
    static const wchar_t* end(const wchar_t* src, int length) {
        if (length <= 0)
            return nullptr;
        return detail::endAfterLastEscape(src, src + ::wcsnlen(src, static_cast<std::size_t>(length)));
    }
};

struct Utf8ToWide {
    static constexpr bool kReplaces = true;
    static constexpr auto kForm = &detail::TextKernels::utf8ToWide;
    static void convert(const char* src, int length, TqVector<wchar_t>& out) {
        TqCharMapper::utf8ToUnicode(src, length, out);
    }
    static std::wstring expected(const char* src, int length) { return reference::utf8ToUnicode(src, length) + L'\0'; }
    static const char* end(const char* src, int length) { return length == 0 ? src + std::strlen(src) : nullptr; }
};

struct WideToUtf8 {
    static constexpr bool kReplaces = false;
    static constexpr auto kForm = &detail::TextKernels::wideToUtf8;
    static void convert(const wchar_t* src, int length, TqVector<char>& out) {
        TqCharMapper::unicodeToUtf8(src, length, out);
    }
    static std::string expected(const wchar_t* src, int length) {
        return length == 0 ? "#" : '#' + reference::unicodeToUtf8(src, length) + '\0';
    }
    static const wchar_t* end(const wchar_t* src, int length) {
        return length <= 0 ? nullptr : src + ::wcsnlen(src, static_cast<std::size_t>(length) + 1);
    }
};

class TextConversion : public testing::Test {
protected:
    template <class Direction, class From>
    void check(const From* src, int length) {
        using To = std::conditional_t<std::is_same_v<From, char>, wchar_t, char>;
        const std::basic_string<To> expected = Direction::expected(src, length);
        TqVector<To> out;
        out.append('#');
        Direction::convert(src, length, out);
        ASSERT_EQ(contents(out), expected) << "length " << length;
        TqVector<To> roomy(2 * static_cast<int>(expected.size()) + 64);
        roomy.append('#');
        Direction::convert(src, length, roomy);
        ASSERT_EQ(contents(roomy), expected) << "with room, length " << length;
        const From* end = Direction::end(src, length);
        if (end == nullptr)
            return;
        const auto text = expected.substr(Direction::kReplaces ? 0 : 1);
        const std::size_t room = sizeof(To) == 1 ? text.size() : static_cast<std::size_t>(end - src) + 1;
        for (const detail::TextKernels* kernels : m_kernels) {
            To* first = std::get<reference::GuardedBuffer<To>>(m_output).last(room);
            To* last = (kernels->*Direction::kForm)(src, end, first);
            ASSERT_EQ(std::basic_string<To>(first, last) + To{}, text) << "length " << length;
        }
    }

    template <class Direction, class From>
    void checkCopy(const std::basic_string<From>& text, int length) {
        check<Direction>(place(text), length);
    }

    // The text with its terminator, right before memory that cannot be read.
    template <class From>
    const From* place(const std::basic_string<From>& text) {
        return std::get<reference::GuardedBuffer<From>>(m_source).place(text.c_str(), text.size() + 1);
    }

    // The piece at every offset in the text, with nothing after it, a little, and enough for another step of each
    // width; taken whole, too far, not at all, and cut at each of its characters.
    template <class Direction, class From>
    void sweep(const std::basic_string<From>& around, const std::basic_string<From>& piece) {
        for (std::size_t offset = 0; offset + piece.size() <= kLongestText; ++offset) {
            for (const std::size_t rest : {std::size_t{0}, std::size_t{3}, std::size_t{17}, kLongestText}) {
                const auto whole = around.substr(0, offset) + piece + around.substr(0, rest);
                const From* src = place(whole);
                const auto total = static_cast<int>(whole.size());
                for (const int length : {INT_MIN, -1, 0, 1, total, total + 9, INT_MAX})
                    ASSERT_NO_FATAL_FAILURE(check<Direction>(src, length));
                for (std::size_t length = offset; length <= offset + piece.size(); ++length)
                    ASSERT_NO_FATAL_FAILURE(check<Direction>(src, static_cast<int>(length)));
            }
        }
    }

    const std::vector<const detail::TextKernels*> m_kernels = reference::kernelForms();
    template <class Char>
    using Buffer = reference::GuardedBuffer<Char>;
    std::tuple<Buffer<char>, Buffer<wchar_t>> m_source{kCapacity, kCapacity};
    std::tuple<Buffer<char>, Buffer<wchar_t>> m_output{kCapacity, kCapacity};
};

// Every byte value but 0 and the backslash, in an order that puts high ones everywhere.
std::string filler() {
    std::string text;
    for (unsigned i = 0; text.size() < kLongestText; ++i) {
        const auto byte = static_cast<char>(i * 37 + 65);
        if (byte != 0 && byte != '\\')
            text += byte;
    }
    return text;
}

// Whole escapes, broken ones, and runs of backslashes.
const std::string kEscapes[] = {"",          "\\U+4E2D",     "\\u+00e9",       "\\U+0000",         "\\U+005C",
                                "\\M+18140", "\\m+5b0a1",    "\\M+10041",      "\\M+2007F",        "\\M+30080",
                                "\\M+40000", "\\M+61234",    "\\U+00G1",       "\\U+12",           "\\U",
                                "\\",        "\\M+1",        "\\M+1814",       "\\U-1234",         "\\\\U+0041",
                                "\\\\\\",    "\\U+\\U+0042", "\\M+1\\M+10043", "\\M+10044\\U+0045"};

TEST_F(TextConversion, EscapesAtEveryOffsetAndLength) {
    const std::wstring ascii(kLongestText, L'a');
    std::wstring mixed = widened(filler());
    const int special[] = {127, 128, 0xFFFF, 0x10000, 0x1F600, -1, -191, INT_MIN};
    for (std::size_t i = 0; i < mixed.size(); i += 9)
        mixed[i] = static_cast<wchar_t>(special[i / 9]);
    for (const std::string& piece : kEscapes) {
        ASSERT_NO_FATAL_FAILURE(sweep<NarrowToWide>(filler(), piece));
        ASSERT_NO_FATAL_FAILURE(sweep<WideToNarrow>(mixed, widened(piece)));
        ASSERT_NO_FATAL_FAILURE(sweep<WideToNarrow>(ascii, widened(piece)));
    }
}

TEST_F(TextConversion, Utf8AtEveryOffsetAndLength) {
    for (const char* bytes : {"", "\xE4\xB8\xAD", "\xE4\xB8", "\xE4", "\xC3\xA9", "\xC3", "\x80\xBF", "\xE4\xB8\x41",
                              "\xFF\x80\x80", "\xFF\x80", "\xF0\x9F\x98\x80", "\xE0\xC3\xA9", "\xC0\x80\xED\xA0\x80",
                              "\xE4\xB8\xAD\xE6\x96\x87\xC3\xA9\xE5\xAD\x97"})
        ASSERT_NO_FATAL_FAILURE(sweep<Utf8ToWide>(std::string(kLongestText, 'a'), std::string(bytes)));
    std::string eastAsian;
    while (eastAsian.size() < kLongestText)
        eastAsian += "\xE4\xB8\xAD";
    for (const char* bytes : {"", "a", "\xC3\xA9", "\xE4\xB8", "\xF0\x9F\x98\x80"})
        ASSERT_NO_FATAL_FAILURE(sweep<Utf8ToWide>(eastAsian, std::string(bytes)));
    for (const std::wstring& characters :
         {L""s, L"\x7F\x80"s, L"\u07FF\u0800"s, L"\uFFFF\U00010000"s, L"\U0001F600\U0001F600\U0001F600"s, L"\xD800"s,
          L"\u4E2D\u6587a\u5B57"s, std::wstring(1, static_cast<wchar_t>(-60)), std::wstring(20, L'\U0001F600')})
        for (const wchar_t around : {L'a', L'\u4E2D'})
            ASSERT_NO_FATAL_FAILURE(sweep<WideToUtf8>(std::wstring(kLongestText, around), characters));

    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 60, ' ');
        for (char& c : text)
            c = "aZ\x80\xBF\xC3\xE4\xF0\xFF"[random() % 8];
        ASSERT_NO_FATAL_FAILURE(checkCopy<Utf8ToWide>(text, 0));
        ASSERT_NO_FATAL_FAILURE(checkCopy<Utf8ToWide>(text, static_cast<int>(random() % 70)));
    }
}

TEST_F(TextConversion, ReadsNothingAfterTheLengthOfAnUnterminatedText) {
    for (std::size_t length = 1; length <= kLongestText; ++length) {
        for (const std::string& tail : {""s, "\\U+4E2D"s, "\\M+18140"s}) {
            const std::string text = filler().substr(0, length) + tail;
            const std::wstring wide = widened(text);
            const auto size = static_cast<int>(text.size());
            const char* src = std::get<0>(m_source).place(text.data(), text.size());
            ASSERT_NO_FATAL_FAILURE(check<NarrowToWide>(src, size));
            const wchar_t* wideSrc = std::get<1>(m_source).place(wide.data(), wide.size());
            ASSERT_NO_FATAL_FAILURE(check<WideToNarrow>(wideSrc, size));
        }
    }
}

// With any room an unmeasured conversion writes the beginning of the result and nothing after the room; it stops only
// where the room cannot hold what comes next, or at the end of the text.
TEST_F(TextConversion, UnmeasuredConversionsKeepToTheirRoom) {
    for (const std::size_t count : {5U, 32U, 69U, 100U}) {
        for (const std::size_t every : {1U, 5U, 33U, 200U}) {
            std::wstring text(count, L'a');
            for (std::size_t i = count % every; i < count; i += every)
                text[i] = i % 10 == 3 ? static_cast<wchar_t>(-60) : L'\u4E2D';
            const wchar_t* src = place(text);
            const std::string whole = reference::wideToNarrow(src, INT_MAX);
            for (std::size_t room = 0; room < whole.size() + 80; ++room) {
                for (const detail::TextKernels* kernels : m_kernels) {
                    if (kernels->wideToNarrowUnmeasured == nullptr)
                        continue;
                    char* out = std::get<0>(m_output).last(room);
                    const auto [taken, written] = kernels->wideToNarrowUnmeasured(src, INT_MAX, out, room);
                    ASSERT_LE(written, room);
                    ASSERT_EQ(reference::wideToNarrow(src, static_cast<int>(taken)), whole.substr(0, written));
                    ASSERT_EQ(std::string(out, written), whole.substr(0, written));
                    ASSERT_TRUE(taken == count || room - written < detail::kUnicodeEscapeLength) << room;
                }
            }
        }
    }
}

TEST_F(TextConversion, EveryCharacterAlone) {
    for (int byte = 1; byte < 256; ++byte)
        ASSERT_NO_FATAL_FAILURE(checkCopy<NarrowToWide>(std::string(1, static_cast<char>(byte)), 1));
    for (int c = 1; c < 0x10100; ++c) {
        const std::wstring text(1, static_cast<wchar_t>(c));
        ASSERT_NO_FATAL_FAILURE(checkCopy<WideToNarrow>(text, 1));
        ASSERT_NO_FATAL_FAILURE(checkCopy<WideToUtf8>(text, 1));
        ASSERT_NO_FATAL_FAILURE(checkCopy<Utf8ToWide>(reference::unicodeToUtf8(text.c_str(), 1), 0));
    }
}

// Sizes are measured a stretch at a time: texts around whole stretches, with characters of every size at the joints.
TEST_F(TextConversion, LongTextsConvertLikeShortOnes) {
    for (const std::size_t length : {2047U, 2048U, 2049U, 4096U, 10000U}) {
        std::wstring text(length, L'a');
        for (std::size_t i = 0; i < length; i += 31)
            text[i] = static_cast<wchar_t>(0x70 + i * 13);
        for (const int taken : {static_cast<int>(length) - 1, INT_MAX}) {
            TqVector<char> narrow;
            TqCharMapper::wideCharToMultiByte(kCodePageWestern, text.c_str(), taken, narrow);
            ASSERT_EQ(contents(narrow), reference::wideToNarrow(text.c_str(), taken) + '\0') << length;
            TqVector<char> utf8;
            TqCharMapper::unicodeToUtf8(text.c_str(), taken, utf8);
            ASSERT_EQ(contents(utf8), reference::unicodeToUtf8(text.c_str(), taken) + '\0') << length;
        }
    }
}

// Anchors for the reference, for every code page, with and without flags.
TEST(KnownTexts, ConvertTheSameForEveryCodePage) {
    struct Row {
        std::string narrow;
        int length;
        std::wstring wide;
    };
    const Row toWide[] = {
        {"A\\U+00e9B", 9, L"A\u00E9B\0"s}, {"\\M+18140", 8, L"\\M+18140\0"s}, {"\\M+10041", 8, L"A\0"s},
        {"\\M+18140", 1, L"\\M+18140\0"s}, // begins before the end
        {"x\\U+4E2Dy", 2, L"x\u4E2D\0"s},  {"\xE9", 1, L"\u00E9\0"s},         {"\\U+D83D", 7, L"\xD83D\0"s},
        {"ab\0cd"s, 5, L"ab\0"s},          {"\\U+00G1", 7, L"\\U+00G1\0"s},   {"abc", -4, L"\0"s},
    };
    const Row toNarrow[] = {
        {"\\U+00E9\0"s, 1, L"\u00E9"},     {"\\U+4E2D\0"s, 7, L"\\U+4E2D"}, {"\\u+4e2d\0"s, 3, L"\\u+4e2d"},
        {"\\U+F600\0"s, 1, L"\U0001F600"}, {"ab\0"s, 5, L"ab\0cd"s},        {"\0"s, 0, L"abc"},
    };
    for (const int number : {0, 1, 30, 38, 45, 46, -1}) {
        const auto page = static_cast<code_page_id>(number);
        for (const Row& row : toWide) {
            TqVector<wchar_t> out;
            TqCharMapper::multiByteToWideChar(page, row.narrow.c_str(), row.length, out);
            EXPECT_EQ(contents(out), row.wide) << row.narrow << " page " << page;
            TqVector<wchar_t> flagged;
            TqCharMapper::multiByteToWideChar(page, 8U, row.narrow.c_str(), row.length, flagged);
            if (page != kCodePageUtf8) {
                EXPECT_EQ(contents(flagged), row.wide) << row.narrow << " page " << page;
            }
        }
        for (const Row& row : toNarrow) {
            TqVector<char> out;
            TqCharMapper::wideCharToMultiByte(page, row.wide.c_str(), row.length, out);
            EXPECT_EQ(contents(out), row.narrow) << " page " << page;
        }
    }
}

TEST(KnownTexts, WithoutSource) {
    TqVector<wchar_t> wide;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, nullptr, 5, wide);
    EXPECT_EQ(contents(wide), L"\0"s);
    TqCharMapper::utf8ToUnicode(nullptr, 3, wide);
    EXPECT_EQ(contents(wide), L"\0"s);
    TqVector<char> narrow;
    TqCharMapper::unicodeToUtf8(nullptr, 5, narrow);
    TqCharMapper::unicodeToUtf8(nullptr, -1, narrow);
    EXPECT_TRUE(narrow.isEmpty());
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, nullptr, 5, narrow);
    EXPECT_EQ(contents(narrow), "\0"s);
}

TEST(KnownTexts, Utf8WithFlagsIsOneCharacterOrAQuestionMark) {
    const auto convert = [](const char* text) {
        TqVector<wchar_t> out;
        for (const int length : {-1, 0, 1, 100})
            TqCharMapper::multiByteToWideChar(kCodePageUtf8, 0U, text, length, out);
        return contents(out);
    };
    EXPECT_EQ(convert("A"), L"AAAA") << "whatever the length, without terminator";
    EXPECT_EQ(convert("\xE4\xB8\xAD"), std::wstring(4, L'\u4E2D'));
    EXPECT_EQ(convert("\xF0\x9F\x98\x80"), std::wstring(4, L'\U0001F600'));
    for (const char* text : {"", "AB", "\xE4\xB8", "\xE4\xB8\xAD ", "\xF0\x9F\x98\x80\x80", "\x80", "\\U+4E2D",
                             static_cast<const char*>(nullptr)})
        EXPECT_EQ(convert(text), L"????") << testing::PrintToString(text);
}

TEST(ConversionOutput, LeavesSharersAlone) {
    TqVector<wchar_t> wide;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, "one", 3, wide);
    const TqVector<wchar_t> sharer = wide;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, "2", 1, wide);
    EXPECT_EQ(contents(wide), L"one\0"s + L"2\0"s);
    EXPECT_EQ(contents(sharer), L"one\0"s);

    TqVector<char> narrow;
    narrow.setPhysicalLength(64); // room to write in place, if it were not shared
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"one", 3, narrow);
    const TqVector<char> narrowSharer = narrow;
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"2", 1, narrow);
    EXPECT_EQ(contents(narrow), "one\0"s + "2\0"s);
    EXPECT_EQ(contents(narrowSharer), "one\0"s);
}

// Appending many pieces moves what is there a few times only, and no text keeps many more slots than it needs.
TEST(ConversionOutput, RoomGrowsInProportionAndIsGivenBack) {
    TqVector<wchar_t> wide;
    TqVector<wchar_t> characters;
    TqVector<char> narrow;
    TqVector<char> utf8;
    const std::wstring piece(50, L'\u00E9');
    const std::string escapes = reference::wideToNarrow(piece.c_str(), 50);
    int moves = 0;
    const auto slots = [&] {
        return std::array{wide.physicalLength(), characters.physicalLength(), narrow.physicalLength(),
                          utf8.physicalLength()};
    };
    for (int i = 0; i < 2000; ++i) {
        const auto before = slots();
        TqCharMapper::multiByteToWideChar(kCodePageWestern, escapes.c_str(), 350, wide);
        TqCharMapper::multiByteToWideChar(kCodePageUtf8, 0U, "\xC3\xA9", 2, characters);
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, piece.c_str(), 50, narrow);
        TqCharMapper::unicodeToUtf8(piece.c_str(), 50, utf8);
        const auto after = slots();
        for (std::size_t k = 0; k < before.size(); ++k)
            moves += before[k] != after[k] ? 1 : 0;
        ASSERT_LE(wide.physicalLength(), 2 * wide.logicalLength() + 1);
    }
    EXPECT_EQ(wide.logicalLength(), 2000 * 51);
    EXPECT_LE(moves, 4 * 16);
    TqCharMapper::utf8ToUnicode("\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD", 18,
                                characters = TqVector<wchar_t>());
    EXPECT_LE(characters.physicalLength(), 14);
}

TEST(ConversionOutput, RefusesMoreThanItCanCount) {
    TqVector<char> full;
    full.setLogicalLength(INT_MAX);
    EXPECT_THROW(TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"", 0, full), std::length_error);
    EXPECT_THROW(TqCharMapper::unicodeToUtf8(L"\u4E2D", 1, full), std::length_error);
    EXPECT_EQ(full.logicalLength(), INT_MAX);
}

// A vector of To whose elements hold the text, with its terminator, and room for `slots` elements.
template <class To, class From>
TqVector<To> holding(const std::basic_string<From>& text, int slots) {
    const std::size_t bytes = (text.size() + 1) * sizeof(From);
    TqVector<To> vector;
    vector.setPhysicalLength(slots);
    vector.setLogicalLength(static_cast<int>((bytes + sizeof(To) - 1) / sizeof(To)));
    std::memcpy(vector.asArrayPtr(), text.c_str(), bytes);
    return vector;
}

template <class From, class To>
const From* sourceIn(const TqVector<To>& vector) {
    return reinterpret_cast<const From*>(vector.asArrayPtr());
}

TEST(ConversionOutput, MayHoldTheSource) {
    const std::wstring wideText = L"held \\U+4E2D in the vector itself \u4E2D " + std::wstring(90, L'x');
    const std::string text = "held \\U+4E2D here " + std::string(93, 'y');
    for (const int slots : {0, 3200}) { // so that it must grow, and so that it need not
        auto narrow = holding<char>(wideText, slots);
        const std::string before = contents(narrow);
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, sourceIn<wchar_t>(narrow), INT_MAX, narrow);
        EXPECT_EQ(contents(narrow), before + reference::wideToNarrow(wideText.c_str(), INT_MAX) + '\0');

        auto wide = holding<wchar_t>(text, slots);
        const std::wstring wideBefore = contents(wide);
        TqCharMapper::multiByteToWideChar(kCodePageWestern, sourceIn<char>(wide), INT_MAX, wide);
        EXPECT_EQ(contents(wide), wideBefore + reference::narrowToWide(text.c_str(), INT_MAX) + L'\0');
        TqCharMapper::utf8ToUnicode(sourceIn<char>(wide), 0, wide);
        EXPECT_EQ(contents(wide), widened(text) + L'\0');

        auto utf8 = holding<char>(wideText, slots);
        TqCharMapper::unicodeToUtf8(sourceIn<wchar_t>(utf8), 200, utf8);
        EXPECT_EQ(contents(utf8), before + reference::unicodeToUtf8(wideText.c_str(), 200) + '\0');
    }
}

} // namespace
