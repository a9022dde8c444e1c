#include "codepage/TextKernels.h"
#include "reference/GuardedBuffer.h"
#include "reference/TextConversionReference.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace {

namespace detail = tq::detail;

template <class Char>
std::basic_string<Char> contents(const TqVector<Char>& vector) {
    return vector.isEmpty()
               ? std::basic_string<Char>()
               : std::basic_string<Char>(vector.asArrayPtr(), static_cast<std::size_t>(vector.logicalLength()));
}

class Utf8Conversion : public testing::Test {
protected:
    void checkToWide(const char* src, int length) {
        const std::wstring expected = reference::utf8ToUnicode(src, length);
        TqVector<wchar_t> out;
        out.append(L'#'); // replaced
        TqCharMapper::utf8ToUnicode(src, length, out);
        ASSERT_EQ(contents(out), expected + L'\0') << "length " << length;
        if (length != 0)
            return;
        const std::size_t size = std::strlen(src);
        for (const auto form : {detail::plain::utf8ToWide, detail::word::utf8ToWide, detail::wide::utf8ToWide}) {
            wchar_t* room = m_wide.last(size + 1);
            ASSERT_EQ(std::wstring(room, form(src, src + size, room)), expected);
        }
    }

    void checkToUtf8(const wchar_t* src, int length) {
        const std::string expected = reference::unicodeToUtf8(src, length);
        TqVector<char> out;
        out.append('#'); // kept
        TqCharMapper::unicodeToUtf8(src, length, out);
        ASSERT_EQ(contents(out), length == 0 ? "#" : "#" + expected + '\0') << "length " << length;
        if (length <= 0)
            return;
        const std::size_t count = ::wcsnlen(src, static_cast<std::size_t>(length) + 1);
        for (const auto form : {detail::plain::wideToUtf8, detail::word::wideToUtf8, detail::wide::wideToUtf8}) {
            char* room = m_narrow.last(expected.size() + 1);
            ASSERT_EQ(std::string(room, form(src, src + count, room)), expected) << "length " << length;
        }
    }

    reference::GuardedBuffer<char> m_narrowSource{2048};
    reference::GuardedBuffer<wchar_t> m_wideSource{2048};
    reference::GuardedBuffer<char> m_narrow{2048};
    reference::GuardedBuffer<wchar_t> m_wide{2048};
};

TEST_F(Utf8Conversion, KnownBytes) {
    struct Row {
        std::string bytes;
        int length;
        std::wstring expected;
    };
    using namespace std::string_literals;
    const Row rows[] = {
        {"\xE4\xB8\xAD", 3, L"\u4E2D\0"s},
        {"\xC3\xA9", 2, L"\u00E9\0"s},
        {"\xC3\x41", 2,
         L"\u00C3"
         L"A\0"s},
        {"\xF0\x9F\x98\x80", 4, L"\u07D8\u0080\0"s},
        {"ABC", 1, L"AB\0"s}, // the byte at index `length` is read
        {"A\xE4\xB8\xAD"
         "B",
         1, L"A\u4E2D\0"s},
        {"ABC", 0, L"ABC\0"s},
        {"ABC", -1, L"\0"s},
        {"ABC", INT_MIN, L"\0"s},
        {"AB\0C"s, 4, L"AB\0"s},
        {"\xC0\x80\xED\xA0\x80", 0, L"\0\xD800\0"s}, // overlong forms and surrogates are decoded
    };
    for (const Row& row : rows) {
        TqVector<wchar_t> out;
        TqCharMapper::utf8ToUnicode(row.bytes.c_str(), row.length, out);
        EXPECT_EQ(contents(out), row.expected) << testing::PrintToString(row.bytes) << " length " << row.length;
    }
    TqVector<wchar_t> out;
    TqCharMapper::utf8ToUnicode(nullptr, 3, out);
    EXPECT_EQ(contents(out), L"\0"s);
}

TEST_F(Utf8Conversion, BytesAtEveryOffsetAndLength) {
    const std::string pieces[] = {"",
                                  "\xE4\xB8\xAD",
                                  "\xE4\xB8",
                                  "\xE4",
                                  "\xC3\xA9",
                                  "\xC3",
                                  "\x80\xBF",
                                  "\xE4\xB8\x41",
                                  "\xFF\x80\x80",
                                  "\xFF\x80",
                                  "\xF0\x9F\x98\x80",
                                  "\xE0\xC3\xA9",
                                  "\xE4\xB8\xAD\xE6\x96\x87\xC3\xA9\xE5\xAD\x97"};
    for (const std::string& piece : pieces) {
        for (std::size_t offset = 0; offset <= 40; ++offset) {
            for (std::size_t rest = 0; rest <= 18; rest += 6) {
                const std::string text = std::string(offset, 'a') + piece + std::string(rest, 'z');
                const char* src = m_narrowSource.place(text.c_str(), text.size() + 1);
                for (const int length : {0, -1, static_cast<int>(text.size()), INT_MAX})
                    ASSERT_NO_FATAL_FAILURE(checkToWide(src, length));
                for (std::size_t length = offset; length <= offset + piece.size(); ++length)
                    ASSERT_NO_FATAL_FAILURE(checkToWide(src, static_cast<int>(length)));
            }
        }
    }
    std::mt19937 random(7);
    const char bytes[] = "aZ\x80\xBF\xC3\xE4\xF0\xFF";
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 60, ' ');
        for (char& c : text)
            c = bytes[random() % 8];
        const char* src = m_narrowSource.place(text.c_str(), text.size() + 1);
        ASSERT_NO_FATAL_FAILURE(checkToWide(src, 0));
        ASSERT_NO_FATAL_FAILURE(checkToWide(src, static_cast<int>(random() % 70)));
    }
}

TEST_F(Utf8Conversion, EveryCharacterToUtf8AndBack) {
    for (int c = 1; c < 0x10100; ++c) {
        const wchar_t text[] = {static_cast<wchar_t>(c), L'\0'};
        ASSERT_NO_FATAL_FAILURE(checkToUtf8(m_wideSource.place(text, 2), 1));
        TqVector<char> utf8;
        TqCharMapper::unicodeToUtf8(text, 1, utf8);
        TqVector<wchar_t> back;
        TqCharMapper::utf8ToUnicode(utf8.asArrayPtr(), 0, back);
        ASSERT_EQ(contents(back), c <= 0xFFFF ? std::wstring(text, 2) : std::wstring(1, L'\0'));
    }
}

TEST_F(Utf8Conversion, CharactersAtEveryOffsetAndLength) {
    const std::wstring pieces[] = {L"",
                                   L"\x7F\x80",
                                   L"\u07FF\u0800",
                                   L"\uFFFF\U00010000",
                                   L"\U0001F600\U0001F600\U0001F600",
                                   L"\xD800",
                                   L"\u4E2D\u6587a\u5B57",
                                   std::wstring(1, static_cast<wchar_t>(-60)),
                                   std::wstring(20, L'\U0001F600')};
    for (const std::wstring& piece : pieces) {
        for (std::size_t offset = 0; offset <= 40; ++offset) {
            for (std::size_t rest = 0; rest <= 18; rest += 6) {
                const std::wstring text = std::wstring(offset, L'a') + piece + std::wstring(rest, L'z');
                const wchar_t* src = m_wideSource.place(text.c_str(), text.size() + 1);
                for (const int length : {0, -1, INT_MIN, static_cast<int>(text.size()), INT_MAX})
                    ASSERT_NO_FATAL_FAILURE(checkToUtf8(src, length));
                for (std::size_t length = offset; length <= offset + piece.size(); ++length)
                    ASSERT_NO_FATAL_FAILURE(checkToUtf8(src, static_cast<int>(length)));
            }
        }
    }
    TqVector<char> out;
    TqCharMapper::unicodeToUtf8(nullptr, 5, out);
    TqCharMapper::unicodeToUtf8(nullptr, -1, out);
    EXPECT_TRUE(out.isEmpty());
}

TEST(CheckSum, KnownSums) {
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi("AB", 2), 197.0);
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi("\xFF", 1), -1.0);
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(L"AB", 2), 197.0);
    for (const int count : {0, -1, INT_MIN}) {
        EXPECT_EQ(TqCharMapper::getCheckSumAnsi("AB", count), 0.0);
        EXPECT_EQ(TqCharMapper::getCheckSumUnicode(L"AB", count), 0.0);
    }
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi(nullptr, 3), 0.0);
    const std::int32_t wraps[] = {INT32_MIN, INT32_MAX, 0x40000000, -1};
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(wraps, 4), -2147483648.0 - 2.0 - 1073741824.0 - 4.0);
    char unaligned[9] = {0, 1, 0, 0, 0, 2, 0, 0, 0};
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(unaligned + 1, 2), 5.0);
}

// Longer than the sum of so many products can be exact in a double: the order and the rounding of the additions show.
TEST(CheckSum, LongTextsAddDoublesInOrder) {
    std::mt19937 random(3);
    std::vector<std::int32_t> units((std::size_t{1} << 23) + 5);
    for (std::size_t i = 0; i < units.size(); ++i) {
        // Products close to the largest, and odd for every other unit, so that the sum passes 2^53 and is rounded then.
        const auto weight = static_cast<std::uint32_t>(i + 1);
        const std::uint32_t largest = (0x7FFFFFFFU - static_cast<std::uint32_t>(random() % 1000)) / weight;
        units[i] = static_cast<std::int32_t>(largest % 2 == 0 ? largest - 1 : largest);
    }
    double expected = 0.0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto product = static_cast<std::uint32_t>(i + 1) * static_cast<std::uint32_t>(units[i]);
        expected += static_cast<double>(static_cast<std::int32_t>(product));
    }
    EXPECT_EQ(TqCharMapper::getCheckSumUnicode(units.data(), static_cast<int>(units.size())), expected);
    expected = 0.0;
    const auto* bytes = reinterpret_cast<const signed char*>(units.data());
    for (int i = 0; i < 1000003; ++i)
        expected += static_cast<double>((i + 1) * bytes[i]);
    EXPECT_EQ(TqCharMapper::getCheckSumAnsi(bytes, 1000003), expected);
}

} // namespace
