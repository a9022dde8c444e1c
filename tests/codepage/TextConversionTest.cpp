#include "codepage/Escapes.h"
#include "codepage/TextKernels.h"
#include "reference/KernelChoice.h"
#include "reference/TextConversionReference.h"

namespace {

namespace detail = tq::detail;
using namespace std::string_literals;
using reference::widened;

[[maybe_unused]] const bool kIsChosen = reference::chooseKernels();

constexpr std::size_t kCapacity = 100000;
constexpr std::size_t kLongestText = 70; // Several steps of every width, with every tail.

template <class Char>
std::basic_string<Char> contents(const TqVector<Char>& vector) {
    EXPECT_LE(vector.logicalLength(), vector.physicalLength());
    return vector.isEmpty()
               ? std::basic_string<Char>()
               : std::basic_string<Char>(vector.asArrayPtr(), static_cast<std::size_t>(vector.logicalLength()));
}

// A conversion: its inner loop, the function, the text that a vector with a '#' in it then holds, how many of its
// elements were there before, and the end of what the inner loop is given (null: it is not asked).
template <class From, class To>
struct Direction {
    To* (*detail::TextKernels::*form)(const From*, const From*, To*) noexcept;
    void (*convert)(const From*, int, TqVector<To>&);
    std::basic_string<To> (*expected)(const From*, int);
    std::size_t kept;
    const From* (*end)(const From*, int);
};

template <class Char>
const Char* endAt(const Char* src, std::size_t limit) {
    while (limit-- > 0 && *src != 0)
        ++src;
    return src;
}

template <class Char>
const Char* afterEscapes(const Char* src, int length) {
    return length > 0 ? detail::endAfterLastEscape(src, endAt(src, static_cast<std::size_t>(length))) : nullptr;
}

const Direction<char, wchar_t> kNarrowToWide = {
    &detail::TextKernels::narrowToWide,
    [](auto src, int length, auto& out) { TqCharMapper::multiByteToWideChar(kCodePageWestern, src, length, out); },
    [](auto src, int length) { return L'#' + reference::narrowToWide(src, length) + L'\0'; }, 1, afterEscapes<char>};
const Direction<wchar_t, char> kWideToNarrow = {
    &detail::TextKernels::wideToNarrow,
    [](auto src, int length, auto& out) { TqCharMapper::wideCharToMultiByte(kCodePageWestern, src, length, out); },
    [](auto src, int length) { return '#' + reference::wideToNarrow(src, length) + '\0'; }, 1, afterEscapes<wchar_t>};
const Direction<char, wchar_t> kUtf8ToWide = {
    &detail::TextKernels::utf8ToWide, TqCharMapper::utf8ToUnicode,
    [](auto src, int length) { return reference::utf8ToUnicode(src, length) + L'\0'; }, 0,
    [](auto src, int length) { return length == 0 ? src + std::strlen(src) : nullptr; }};
const Direction<wchar_t, char> kWideToUtf8 = {
    &detail::TextKernels::wideToUtf8, TqCharMapper::unicodeToUtf8,
    [](auto src, int length) { return length == 0 ? "#"s : '#' + reference::unicodeToUtf8(src, length) + '\0'; }, 1,
    [](auto src, int length) {
        return length > 0 ? endAt(src, std::size_t{1} + static_cast<unsigned>(length)) : nullptr;
    }};

template <class Char>
reference::GuardedBuffer<Char> g_output(kCapacity);

// The text right before memory that cannot be read, with its terminator.
template <class Char>
const Char* place(const std::basic_string<Char>& text, std::size_t terminator = 1) {
    static reference::GuardedBuffer<Char> s_buffer(kCapacity);
    return s_buffer.place(text.c_str(), text.size() + terminator);
}

// With any room an unmeasured conversion writes the beginning of the result, of whole characters, and nothing after the
// room; it stops only where the room cannot hold what comes next, or at the end of the text.
void checkUnmeasured(detail::TextKernels::Unmeasured convert, decltype(detail::TextKernels::wideToNarrowSize) sizeOf,
                     const wchar_t* src, const wchar_t* end, const std::string& text) {
    for (std::size_t room = text.size() % 5; room < text.size() + 80 && convert != nullptr; room += 7) {
        char* out = g_output<char>.last(room);
        const auto [taken, written] = convert(src, INT_MAX, out, room);
        ASSERT_LE(written, room);
        ASSERT_EQ(std::string(out, written), text.substr(0, written));
        ASSERT_EQ(sizeOf(src, taken), written);
        ASSERT_TRUE(src + taken == end || room - written < detail::kUnicodeEscapeLength) << room;
    }
}

template <class From, class To>
void check(const Direction<From, To>& direction, const From* src, int length) {
    const std::basic_string<To> expected = direction.expected(src, length);
    const auto size = static_cast<int>(expected.size());
    for (const int slots : {0, 1, size, size + 1, 2 * size + 64}) { // full with the '#', one too few, just enough
        TqVector<To> out(slots);
        out.append('#');
        direction.convert(src, length, out);
        ASSERT_EQ(contents(out), expected) << "length " << length << ", slots " << slots;
    }
    const From* end = direction.end(src, length);
    if (end == nullptr)
        return;
    const auto text = expected.substr(direction.kept);
    const std::size_t room = sizeof(To) == 1 ? text.size() : static_cast<std::size_t>(end - src) + 1;
    for (const detail::TextKernels* kernels : reference::kernelForms()) {
        To* const first = std::fill_n(g_output<To>.last(room), room, To{'#'}) - room;
        To* last = (kernels->*direction.form)(src, end, first);
        ASSERT_EQ(std::basic_string<To>(first, last) + To{}, text) << "length " << length;
        if constexpr (std::is_same_v<From, wchar_t>) {
            const auto [convert, sizeOf] = direction.form == &detail::TextKernels::wideToNarrow
                                               ? std::pair(kernels->wideToNarrowUnmeasured, kernels->wideToNarrowSize)
                                               : std::pair(kernels->wideToUtf8Unmeasured, kernels->wideToUtf8Size);
            if (length == INT_MAX)
                checkUnmeasured(convert, sizeOf, src, end, text.substr(0, text.size() - 1));
        } else if (direction.form == &detail::TextKernels::utf8ToWide) {
            ASSERT_EQ(kernels->utf8ToWideSize(src, static_cast<std::size_t>(end - src)), text.size() - 1);
        }
    }
}

// The piece at every offset, with nothing after it, a little, and enough for another step of each width; taken whole,
// too far, not at all, and cut at each of its characters.
template <class From, class To>
void sweep(const Direction<From, To>& direction, const std::basic_string<From>& around,
           const std::basic_string<From>& piece) {
    for (std::size_t offset = 0; offset + piece.size() <= kLongestText; ++offset)
        for (const std::size_t rest : {std::size_t{0}, std::size_t{3}, std::size_t{17}, kLongestText}) {
            const auto whole = around.substr(0, offset) + piece + around.substr(0, rest);
            const From* src = place(whole);
            const auto total = static_cast<int>(whole.size());
            for (const int length : {INT_MIN, -1, 0, 1, total, total + 9, INT_MAX})
                ASSERT_NO_FATAL_FAILURE(check(direction, src, length));
            for (std::size_t length = offset; length <= offset + piece.size(); ++length)
                ASSERT_NO_FATAL_FAILURE(check(direction, src, static_cast<int>(length)));
        }
}

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

const std::string kEscapes[] = {"",          "\\U+4E2D",  "\\u+00e9",  "\\U+0000",  "\\M+1\\M+10043",
                                "\\U+005C",  "\\M+18140", "\\m+5b0a1", "\\M+10041", "\\M+10044\\U+0045",
                                "\\M+10001", "\\M+2007F", "\\M+30080", "\\M+40000", "\\\\\\\\\\\\\\\\U+0041",
                                "\\M+61234", "\\U+00G1",  "\\U+12",    "\\U",       "\\U+\\U+0042",
                                "\\",        "\\M+1",     "\\M+1814",  "\\U-1234",  "\\\\\\"};

TEST(TextConversion, EscapesAtEveryOffsetAndLength) {
    const std::wstring ascii(kLongestText, L'\1'); // which is not the end, though nearly 0
    std::wstring mixed = widened(filler());
    const int special[] = {127, 128, 0xFFFF, 0x10000, 0x1F600, -1, -191, INT_MIN};
    for (std::size_t i = 0; i < mixed.size(); i += 9)
        mixed[i] = static_cast<wchar_t>(special[i / 9]);
    for (const std::string& piece : kEscapes) {
        ASSERT_NO_FATAL_FAILURE(sweep(kNarrowToWide, filler(), piece));
        ASSERT_NO_FATAL_FAILURE(sweep(kWideToNarrow, mixed, widened(piece)));
        ASSERT_NO_FATAL_FAILURE(sweep(kWideToNarrow, ascii, widened(piece)));
    }
    // Texts without a terminator, at whose end memory ends.
    for (std::size_t length = 1; length <= kLongestText; ++length)
        for (const std::string& tail : {""s, "\\U+4E2D"s, "\\M+18140"s}) {
            const std::string text = filler().substr(0, length) + tail;
            ASSERT_NO_FATAL_FAILURE(check(kNarrowToWide, place(text, 0), static_cast<int>(text.size())));
            ASSERT_NO_FATAL_FAILURE(check(kWideToNarrow, place(widened(text), 0), static_cast<int>(text.size())));
            ASSERT_NO_FATAL_FAILURE(check(kUtf8ToWide, place(text + 'a', 0), static_cast<int>(text.size())));
            ASSERT_NO_FATAL_FAILURE(check(kWideToUtf8, place(widened(text + 'a'), 0), static_cast<int>(text.size())));
        }
}

TEST(TextConversion, Utf8AtEveryOffsetAndLength) {
    std::string eastAsian;
    while (eastAsian.size() < kLongestText)
        eastAsian += "\xE4\xB8\xAD";
    for (const char* bytes : {"", "a", "\xE4\xB8\xAD", "\xE4\xB8", "\xE4", "\xC3\xA9", "\xC3", "\x80\xBF",
                              "\xE4\xB8\x41", "\xFF\x80\x80", "\xFF\x80", "\xF0\x9F\x98\x80", "\xE0\xC3\xA9",
                              "\xC0\x80\xED\xA0\x80", "\xE4\xB8\xAD\xE6\x96\x87\xC3\xA9\xE5\xAD\x97"}) {
        for (const std::string& around : {std::string(kLongestText, 'a'), eastAsian})
            ASSERT_NO_FATAL_FAILURE(sweep(kUtf8ToWide, around, std::string(bytes)));
    }
    for (const std::wstring& characters :
         {L""s, L"\x7F\x80"s, L"\u07FF\u0800"s, L"\uFFFF\U00010000"s, L"\U0001F600\U0001F600\U0001F600"s, L"\xD800"s,
          L"\u4E2D\u6587a\u5B57"s, std::wstring(1, static_cast<wchar_t>(-60)), std::wstring(20, L'\U0001F600')}) {
        for (const wchar_t around : {L'\1', L'a', L'\u4E2D'})
            ASSERT_NO_FATAL_FAILURE(sweep(kWideToUtf8, std::wstring(kLongestText, around), characters));
    }
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 60, ' ');
        for (char& c : text)
            c = "aZ\x80\xBF\xC3\xE4\xF0\xFF"[random() % 8];
        ASSERT_NO_FATAL_FAILURE(check(kUtf8ToWide, place(text), round % 2 == 0 ? 0 : static_cast<int>(random() % 70)));
    }
}

TEST(TextConversion, EveryCharacterAloneAndLongTexts) {
    for (int c = 1; c < 0x10100; ++c) {
        const std::wstring text(1, static_cast<wchar_t>(c));
        ASSERT_NO_FATAL_FAILURE(check(kWideToNarrow, place(text), 1));
        ASSERT_NO_FATAL_FAILURE(check(kWideToUtf8, place(text), 1));
        ASSERT_NO_FATAL_FAILURE(check(kUtf8ToWide, place(reference::unicodeToUtf8(text.c_str(), 1)), 0));
        ASSERT_NO_FATAL_FAILURE(check(kNarrowToWide, place(std::string(1, static_cast<char>(c))), 1));
    }
    // Sizes are measured a stretch at a time: characters of every size stand at the joints.
    for (const std::size_t length : {2047U, 2048U, 2049U, 4096U, 10000U}) {
        std::wstring text(length, L'a');
        for (std::size_t i = 0; i < length; i += 31)
            text[i] = static_cast<wchar_t>(0x70 + i * 13);
        for (const int taken : {static_cast<int>(length) - 1, INT_MAX}) {
            ASSERT_NO_FATAL_FAILURE(check(kWideToNarrow, text.c_str(), taken));
            ASSERT_NO_FATAL_FAILURE(check(kWideToUtf8, text.c_str(), taken));
        }
    }
}

// The page of text forms shows what is converted; here: for every code page, with flags and without a source.
TEST(ConversionCalls, CodePagesFlagsAndNull) {
    for (const int number : {0, 38, 45, -1}) {
        const auto page = static_cast<code_page_id>(number);
        TqVector<wchar_t> out;
        TqCharMapper::multiByteToWideChar(page, "ab\0cd", 5, out);
        if (page != kCodePageUtf8)
            TqCharMapper::multiByteToWideChar(page, 8U, "A\\U+00e9\xE9\\M+18140", 17, out);
        TqCharMapper::multiByteToWideChar(page, nullptr, 5, out);
        EXPECT_EQ(contents(out), page != kCodePageUtf8 ? L"ab\0A\u00E9\u00E9\\M+18140\0\0"s : L"ab\0\0"s) << page;
        TqVector<char> narrow;
        TqCharMapper::wideCharToMultiByte(page, L"\u00E9x", 1, narrow);
        TqCharMapper::wideCharToMultiByte(page, nullptr, 5, narrow);
        EXPECT_EQ(contents(narrow), "\\U+00E9\0\0"s) << page;
    }
    TqVector<wchar_t> wide(4);
    TqCharMapper::utf8ToUnicode(nullptr, 3, wide);
    EXPECT_EQ(contents(wide), L"\0"s);
    TqVector<char> narrow;
    TqCharMapper::unicodeToUtf8(nullptr, 5, narrow);
    EXPECT_TRUE(narrow.isEmpty());

    // Flags and UTF-8 together: one character or a question mark, whatever the length.
    for (const int length : {-1, 0, 1, 100}) {
        TqVector<wchar_t> out;
        for (const char* text :
             {"A", "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "", "AB", "\xE4\xB8", "\xE4\xB8\xAD ",
              "\xF0\x9F\x98\x80\x80", "\x80", "\\U+4E2D", static_cast<const char*>(nullptr)})
            TqCharMapper::multiByteToWideChar(kCodePageUtf8, 0U, text, length, out);
        EXPECT_EQ(contents(out), L"A\u00E9\u4E2D\U0001F600????????") << length;
    }
}

// Appending many pieces moves what is there a few times only, and no text keeps many more slots than it needs.
TEST(ConversionOutput, RoomGrowsInProportionAndIsGivenBack) {
    TqVector<wchar_t> wide, eastAsian;
    TqVector<char> narrow, utf8, full;
    const std::wstring piece(50, L'\u00E9');
    std::set<int> rooms;
    for (int i = 0; i < 2000; ++i) {
        TqCharMapper::multiByteToWideChar(kCodePageWestern, "\\U+00E9\\U+00E9", 14, wide);
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, piece.c_str(), 50, narrow);
        TqCharMapper::unicodeToUtf8(piece.c_str(), 50, utf8);
        rooms.insert(wide.physicalLength() + narrow.physicalLength() + utf8.physicalLength());
        ASSERT_LE(wide.physicalLength(), 2 * wide.logicalLength() + 1);
    }
    EXPECT_LE(rooms.size(), 3U * 16);
    TqCharMapper::utf8ToUnicode("\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD\xE4\xB8\xAD", 18,
                                eastAsian);
    EXPECT_LE(eastAsian.physicalLength(), 14);
    full.setLogicalLength(INT_MAX);
    EXPECT_THROW(TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"", 0, full), std::length_error);
    EXPECT_THROW(TqCharMapper::unicodeToUtf8(L"\u4E2D", 1, full), std::length_error);
    EXPECT_EQ(full.logicalLength(), INT_MAX);
}

// Converts a text that lies in the very vector that takes the result; one that shares the record keeps what it had.
template <class From, class To>
void checkHeld(const Direction<From, To>& direction, const std::basic_string<From>& text, int slots) {
    const std::size_t bytes = (text.size() + 1) * sizeof(From);
    TqVector<To> vector;
    vector.setPhysicalLength(slots);
    vector.setLogicalLength(static_cast<int>((bytes + sizeof(To) - 1) / sizeof(To)));
    std::memcpy(vector.asArrayPtr(), text.c_str(), bytes);
    const auto before = contents(vector);
    for (const bool isShared : {true, false}) {
        TqVector<To> out = vector;
        if (!isShared)
            vector = TqVector<To>();
        direction.convert(reinterpret_cast<const From*>(std::as_const(out).asArrayPtr()), INT_MAX, out);
        const auto result = direction.expected(text.c_str(), INT_MAX).substr(direction.kept);
        EXPECT_EQ(contents(out), (direction.kept != 0 ? before : before.substr(0, 0)) + result) << slots << isShared;
        EXPECT_EQ(contents(vector), isShared ? before : before.substr(0, 0));
    }
}

TEST(ConversionOutput, MayHoldTheSourceAndLeavesSharersAlone) {
    const std::wstring wideText = L"held \\U+4E2D in the vector itself \u4E2D " + std::wstring(90, L'x');
    const std::string text = "held \\U+4E2D here " + std::string(93, 'y');
    // So that it must grow, and so that it need not; of the second kind also a text that is short and plain.
    for (const auto& [slots, length] : {std::pair(0, 200U), {3200, 200U}, {3200, 4U}}) {
        checkHeld(kNarrowToWide, text.substr(0, length), slots);
        checkHeld(kWideToNarrow, wideText.substr(0, length), slots);
        checkHeld(kUtf8ToWide, text.substr(0, length), slots);
        checkHeld(kWideToUtf8, wideText.substr(0, length), slots);
    }
}

} // namespace
