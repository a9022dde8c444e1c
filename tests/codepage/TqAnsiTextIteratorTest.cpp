#include "reference/Testing.h"

namespace {

using Characters = std::vector<unsigned>;

// Walks text that ends at a page that cannot be touched, with any length, as a string whose buffer ends there would.
class Walker : public TqAnsiTextIterator {
public:
    Walker(const char* text, int length, code_page_id id = kCodePageWestern) : TqAnsiTextIterator(TqStringA(), id) {
        m_start = m_position = m_characterStart = text;
        m_length = length;
        m_end = text + (length == kUnbounded || m_multiByte ? 0 : length);
    }
    static constexpr int kToTerminator = kUnbounded;
};

const char* place(const std::string& text) {
    static reference::GuardedBuffer<char> s_buffer(256);
    return s_buffer.place(text.c_str(), text.size() + 1);
}

Characters walk(TqAnsiTextIterator& it) {
    Characters result;
    while (it.nextChar() != 0)
        result.push_back(*it);
    return result;
}

TEST(TqAnsiTextIterator, YieldsBytesAndEscapes) {
    const std::pair<const char*, Characters> rows[] = {
        {"A\\U+4E2DB\\u+aBcD", {'A', 0x4E2D, 'B', 0xABCD}},
        {"\\M+18140\\m+5b0a1\\M+0FFFF", {0x8140, 0xB0A1, 0xFFFF}},
        {"\\Q\\\\U+0041\x80\xFF\\", {'\\', 'Q', '\\', 'A', 0x80, 0xFF, '\\'}},
        {"\\M+1234\\U+123", {'\\', 'M', '+', '1', '2', '3', '4', '\\', 'U', '+', '1', '2', '3'}}};
    for (const auto& [text, expected] : rows) {
        Walker unbounded(place(text), Walker::kToTerminator, kCodePageJapanese);
        EXPECT_EQ(walk(unbounded), expected) << text;
        const TqStringA string(text), other("12");
        TqAnsiTextIterator it(other, kCodePageTraditionalChinese);
        it.nextChar();
        it.init(string, kCodePageTraditionalChinese);
        EXPECT_EQ(*it, 0U);
        EXPECT_EQ(walk(it), expected) << text;
    }
    // A length ends the text between characters only, a 0 byte ends it too; the escape of the value 0 does not.
    Walker cut("A\\U+4E2DB", 2), exact("ABC", 2), inside("AB\0C", 4), zero(place("\\U+0000A"), 8);
    EXPECT_TRUE(walk(cut) == (Characters{'A', 0x4E2D}) && walk(exact) == (Characters{'A', 'B'}) &&
                walk(inside) == (Characters{'A', 'B'}));
    EXPECT_TRUE(zero.nextChar() == 0 && zero.nextChar() == 'A');
}

TEST(TqAnsiTextIterator, AppendsDigits) {
    using Row = std::tuple<const char*, int, bool, bool, unsigned, std::ptrdiff_t>;
    const Row rows[] = {{"10fG", 4, true, true, 0x10F, 3},   {"12x", 1, false, true, 1, 1},
                        {"1a", 2, false, true, 1, 1},        {"12", -1, false, true, 0, 0},
                        {"12", INT_MAX, false, true, 12, 2}, {"fFfFfFfF1", 9, true, true, 0xFFFFFFF1, 9},
                        {"1G", 2, false, false, 10, 2},      {"1A", 2, false, false, 20, 2},
                        {"1A", 2, true, false, 0x1A, 2},     {"\x80z", 2, true, false, 0, 2},
                        {"12", INT_MIN, false, false, 0, 0}, {"12", 4, false, false, 1200, 2},
                        {"1", 9, true, false, 0, 1},         {"1", INT_MAX, false, false, 0, 1}};
    for (const auto& [digits, count, isHex, isChecked, expected, read] : rows) {
        const char* text = place(digits);
        Walker it(text, Walker::kToTerminator);
        const auto append = isChecked ? &Walker::appendDigits : &Walker::appendDigitsNoCheck;
        EXPECT_EQ((it.*append)(count, isHex), expected) << digits << ' ' << count;
        EXPECT_TRUE(*it == expected && it.position() - text == read) << digits << ' ' << count;
    }
    Walker continued(place(std::string("\\U+0012") + "345"), Walker::kToTerminator);
    continued.nextChar();
    EXPECT_TRUE(continued.appendDigits(2, true) == 0x1234U && continued.appendDigitsNoCheck(1, true) == 0x12345U);
}

TEST(TqAnsiTextIterator, BreaksSafely) {
    using Row = std::tuple<const char*, int, int, std::size_t, std::ptrdiff_t>;
    const Row rows[] = {
        {"ABCDEFGH", 8, 3, 7, 8},         {"ABCDEFGH", INT_MAX, 1, 8, 8}, {"ABCDEFGH", 1, 3, 0, 1},
        {"ABCDEFGH", INT_MIN, 3, 0, 1},   {"AB\\U+4E2DCD", 4, 3, 2, 9},   {"AB\\M+18140CD", 10, 3, 2, 10},
        {"AB\\M+18140CD", 11, 3, 10, 11}, {"AB\\U+0000CD", 100, 1, 2, 9}, {"\\U+4E2D", 50, 0, 0, 7}};
    for (const auto& [whole, maxBytes, result, length, position] : rows) {
        SCOPED_TRACE(testing::Message() << whole << ' ' << maxBytes);
        const TqStringA text(whole);
        TqAnsiTextIterator it(text, kCodePageWestern);
        TqStringA out("before");
        EXPECT_EQ(it.breakSafely(maxBytes, out), result);
        EXPECT_EQ(std::string(out.c_str(), out.length()), std::string(whole).substr(0, length));
        EXPECT_EQ(it.position() - text.c_str(), position);
        EXPECT_TRUE(out.isEmpty() || maxBytes > 100 || out.capacity() > static_cast<std::size_t>(maxBytes));
    }

    // The mark is the character read before: pieces of one text follow each other without a gap.
    const TqStringA text("ABCDEFGH");
    TqAnsiTextIterator it(text, kCodePageWestern);
    TqStringA out;
    TqAnsiTextIterator none(out, kCodePageWestern);
    EXPECT_EQ(none.breakSafely(5, out), 0);
    std::string joined;
    int result = 3;
    for (int pieces = 0; pieces < 20 && result == 3; ++pieces, joined += out.c_str())
        result = it.breakSafely(4, out);
    EXPECT_TRUE(result == 0 && joined == "ABCDEF");
}

} // namespace
