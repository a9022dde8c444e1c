// Narrow and wide text, both ways: ours, then the C library under a fitting locale, or for texts with escapes, which it
// does not know, the obvious loop over the characters. Then text one character at a time.

#include "bench/Registration.h"
#include "reference/KernelChoice.h"

#include <TqOsBase/codepage/LmCodePage.h>
#include <TqOsBase/codepage/TqAnsiTextIterator.h>
#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <clocale>
#include <codecvt>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <locale>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#if defined(TQ_BENCH_ICU)
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#endif

namespace {

[[maybe_unused]] const bool kIsChosen = reference::chooseKernels();

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * kKiB;
constexpr std::size_t kEscapeEvery = 64;
const std::string kUnicodeEscape = "\\U+4E2D";

std::string asciiText(std::size_t size) {
    std::string text;
    while (text.size() < size)
        text += "Wall 240 mm, see sheet A-101; ";
    text.resize(size);
    return text;
}

std::string escapedText(std::size_t size) {
    std::string text = asciiText(size);
    for (std::size_t i = 0; i + kEscapeEvery <= size; i += kEscapeEvery)
        text.replace(i, kUnicodeEscape.size(), kUnicodeEscape);
    return text;
}

// Half of the characters are escapes, as in a note in Chinese.
std::string denseEscapes(std::size_t size) {
    std::minstd_rand random;
    std::string text;
    while (text.size() + kUnicodeEscape.size() <= size) {
        if (random() % 2 == 0)
            text += kUnicodeEscape;
        else
            text += 'a';
    }
    return text;
}

std::wstring wideText(const std::string& narrow) {
    return {narrow.begin(), narrow.end()};
}

std::wstring accentedText(std::size_t size) {
    std::wstring text = wideText(asciiText(size));
    for (std::size_t i = 0; i < size; i += kEscapeEvery)
        text[i] = L'\u4E2D';
    return text;
}

// Characters drawn from these, with a fixed seed.
std::wstring randomText(std::size_t size, const std::wstring& characters) {
    std::minstd_rand random;
    std::wstring text(size, L'\0');
    for (wchar_t& c : text)
        c = characters[random() % characters.size()];
    return text;
}

std::wstring eastAsianText(std::size_t size) {
    std::wstring text(size, L'\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<wchar_t>(0x4E00 + i * 7919 % 0x5000);
    return text;
}

std::string utf8Of(const std::wstring& text) {
    TqVector<char> out;
    TqCharMapper::unicodeToUtf8(text.c_str(), static_cast<int>(text.size()), out);
    return std::as_const(out).asArrayPtr();
}

// Texts that are converted one after the other, one an iteration, in memory of their own.
template <class Char>
class Texts {
public:
    using String = std::basic_string<Char>;

    Texts(const String& text) : m_texts{text} {} // NOLINT(google-explicit-constructor)
    explicit Texts(std::vector<String> texts) : m_texts(std::move(texts)) {}

    const String& next() {
        m_next = m_next + 1 < m_texts.size() ? m_next + 1 : 0;
        return m_texts[m_next];
    }
    std::size_t longest() const {
        std::size_t length = 0;
        for (const String& text : m_texts)
            length = std::max(length, text.size());
        return length;
    }

private:
    std::vector<String> m_texts;
    std::size_t m_next = 0;
};

// As drawings hold them: of 20 characters, or of 1 to 60 with an escape in every eighth.
std::vector<std::string> textsOf20() {
    std::vector<std::string> texts(64);
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i] = asciiText(30 + i).substr(i % 30, 20);
    return texts;
}

std::vector<std::string> mixedShortTexts() {
    std::minstd_rand random;
    std::vector<std::string> texts(1024);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i] = asciiText(1 + random() % 60);
        if (i % 8 == 0)
            texts[i].insert(random() % texts[i].size(), "\\U+00D8");
    }
    return texts;
}

std::vector<std::wstring> wideTexts(const std::vector<std::string>& texts) {
    std::vector<std::wstring> wide;
    for (const std::string& text : texts) {
        TqVector<wchar_t> out;
        TqCharMapper::multiByteToWideChar(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), out);
        wide.emplace_back(std::as_const(out).asArrayPtr());
    }
    return wide;
}

// As the application does it: one vector for many texts.
void narrowToWide(benchmark::State& state, Texts<char> texts) {
    TqVector<wchar_t> out;
    for (auto _ : state) {
        const std::string& text = texts.next();
        out.setLogicalLength(0);
        TqCharMapper::multiByteToWideChar(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
}

void wideToNarrow(benchmark::State& state, Texts<wchar_t> texts) {
    TqVector<char> out;
    for (auto _ : state) {
        const std::wstring& text = texts.next();
        out.setLogicalLength(0);
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
}

// All texts of the pool appended to one vector, one after the other, over and over until it holds a million elements.
void appendWide(benchmark::State& state, Texts<char> texts) {
    TqVector<wchar_t> out;
    for (auto _ : state) {
        const std::string& text = texts.next();
        if (out.logicalLength() > static_cast<int>(kMiB))
            out = TqVector<wchar_t>();
        TqCharMapper::multiByteToWideChar(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), out);
    }
}

void appendNarrow(benchmark::State& state, Texts<wchar_t> texts) {
    TqVector<char> out;
    for (auto _ : state) {
        const std::wstring& text = texts.next();
        if (out.logicalLength() > static_cast<int>(kMiB))
            out = TqVector<char>();
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), out);
    }
}

void utf8ToWide(benchmark::State& state, const std::string& text) {
    TqVector<wchar_t> out;
    for (auto _ : state) {
        TqCharMapper::utf8ToUnicode(text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
}

void wideToUtf8(benchmark::State& state, const std::wstring& text) {
    TqVector<char> out;
    for (auto _ : state) {
        out.setLogicalLength(0);
        TqCharMapper::unicodeToUtf8(text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
}

void libraryToWide(benchmark::State& state, const std::string& text, const char* locale) {
    std::setlocale(LC_ALL, locale);
    std::vector<wchar_t> out(text.size() + 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::mbstowcs(out.data(), text.c_str(), out.size()));
    std::setlocale(LC_ALL, "C");
}

void libraryToNarrow(benchmark::State& state, const std::wstring& text, const char* locale) {
    std::setlocale(LC_ALL, locale);
    std::vector<char> out(text.size() * 4 + 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::wcstombs(out.data(), text.c_str(), out.size()));
    std::setlocale(LC_ALL, "C");
}

#if defined(TQ_BENCH_ICU)
// ICU's own texts are of 16-bit units: it has half as much to write, or to read, on the wide side.
void icuFromUtf8(benchmark::State& state, const std::string& text) {
    std::vector<UChar> out(text.size() + 1);
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t length = 0;
        u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()), &length, text.data(),
                      static_cast<int32_t>(text.size()), &error);
        benchmark::DoNotOptimize(length);
        benchmark::ClobberMemory();
    }
}

void icuToUtf8(benchmark::State& state, const std::wstring& text) {
    const std::vector<UChar> units(text.begin(), text.end());
    std::vector<char> out(text.size() * 3 + 1);
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t length = 0;
        u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &length, units.data(),
                    static_cast<int32_t>(units.size()), &error);
        benchmark::DoNotOptimize(length);
        benchmark::ClobberMemory();
    }
}
#else
void icuFromUtf8(benchmark::State& state, const std::string&) {
    state.SkipWithError("missing");
}

void icuToUtf8(benchmark::State& state, const std::wstring&) {
    state.SkipWithError("missing");
}
#endif

// The facet of the C++ library.
using Utf8Facet = std::codecvt_utf8<wchar_t>;

void facetToWide(benchmark::State& state, const std::string& text) {
    const Utf8Facet facet;
    std::vector<wchar_t> out(text.size() + 1);
    for (auto _ : state) {
        std::mbstate_t shift{};
        const char* from = nullptr;
        wchar_t* to = nullptr;
        facet.in(shift, text.data(), text.data() + text.size(), from, out.data(), out.data() + out.size(), to);
        benchmark::DoNotOptimize(to);
        benchmark::ClobberMemory();
    }
}

void facetToUtf8(benchmark::State& state, const std::wstring& text) {
    const Utf8Facet facet;
    std::vector<char> out(text.size() * 4 + 1);
    for (auto _ : state) {
        std::mbstate_t shift{};
        const wchar_t* from = nullptr;
        char* to = nullptr;
        facet.out(shift, text.data(), text.data() + text.size(), from, out.data(), out.data() + out.size(), to);
        benchmark::DoNotOptimize(to);
        benchmark::ClobberMemory();
    }
}

int hexDigit(int c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const int lower = c | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

wchar_t* loopToWide(const std::string& text, wchar_t* out) {
    const char* p = text.c_str();
    const char* end = p + text.size();
    while (p < end && *p != 0) {
        if (p[0] == '\\' && (p[1] | 0x20) == 'u' && p[2] == '+') {
            int value = 0;
            int i = 3;
            for (; i < 7 && hexDigit(p[i]) >= 0; ++i)
                value = value * 16 + hexDigit(p[i]);
            if (i == 7) {
                *out++ = static_cast<wchar_t>(value);
                p += 7;
                continue;
            }
        }
        *out++ = static_cast<unsigned char>(*p++);
    }
    *out++ = 0;
    return out;
}

char* loopToNarrow(const std::wstring& text, char* out) {
    const wchar_t* p = text.c_str();
    const wchar_t* end = p + text.size();
    for (; p < end && *p != 0; ++p) {
        if (*p > 127) {
            *out++ = '\\';
            *out++ = 'U';
            *out++ = '+';
            for (int shift = 12; shift >= 0; shift -= 4)
                *out++ = "0123456789ABCDEF"[*p >> shift & 15];
        } else {
            *out++ = static_cast<char>(*p);
        }
    }
    *out++ = 0;
    return out;
}

template <class To, class From>
void convertByLoop(benchmark::State& state, Texts<From> texts, To* (*loop)(const std::basic_string<From>&, To*)) {
    std::vector<To> room(texts.longest() * 7 + 1);
    for (auto _ : state) {
        loop(texts.next(), room.data());
        benchmark::DoNotOptimize(room.data());
        benchmark::ClobberMemory();
    }
}

// Room for the longest result is made first, at least double what there was.
template <class To, class From>
void appendByLoop(benchmark::State& state, Texts<From> texts, To* (*loop)(const std::basic_string<From>&, To*)) {
    std::unique_ptr<To[]> room;
    std::size_t length = 0;
    std::size_t capacity = 0;
    for (auto _ : state) {
        const auto& text = texts.next();
        if (length > kMiB) {
            room = nullptr;
            length = capacity = 0;
        }
        if (capacity - length < text.size() * 7 + 1) {
            capacity = std::max(length + text.size() * 7 + 1, capacity * 2);
            std::unique_ptr<To[]> larger(new To[capacity]);
            std::copy_n(room.get(), length, larger.get());
            room = std::move(larger);
        }
        length = static_cast<std::size_t>(loop(text, room.get() + length) - room.get());
        benchmark::ClobberMemory();
    }
}

// The sum of the characters, once per iteration.
using Sum = std::function<std::uint64_t(const TqStringA&)>;

std::uint64_t sumOfIterator(const TqStringA& text) {
    std::uint64_t sum = 0;
    TqAnsiTextIterator it(text, kCodePageWestern);
    while (const unsigned character = it.nextChar())
        sum += character;
    return sum;
}

std::uint64_t sumOfLoop(const TqStringA& text) {
    std::uint64_t sum = 0;
    for (const char* p = text.c_str(); *p != 0;) {
        unsigned character = static_cast<unsigned char>(*p);
        std::ptrdiff_t length = 1;
        if (p[0] == '\\' && (p[1] | 0x20) == 'u' && p[2] == '+') {
            unsigned value = 0;
            std::ptrdiff_t i = 3;
            for (; i < 7 && hexDigit(p[i]) >= 0; ++i)
                value = value * 16 + static_cast<unsigned>(hexDigit(p[i]));
            if (i == 7) {
                character = value;
                length = i;
            }
        }
        sum += character;
        p += length;
    }
    return sum;
}

void iterate(benchmark::State& state, const std::string& narrow, const Sum& sumOf) {
    const TqStringA text(narrow.c_str());
    const std::uint64_t expected = sumOfLoop(text);
    for (auto _ : state) {
        if (sumOf(text) != expected) {
            state.SkipWithError("another checksum");
            return;
        }
    }
}

// A drawing's note in two scripts, with the punctuation of both.
std::wstring noteText(std::size_t size) {
    std::wstring text;
    while (text.size() < size) {
        text +=
            L"Wall 240 mm (see A-101), \u58C1\u539A 240\u6BEB\u7C73\u3002\u8BE6\u89C1\u56FE\u7EB8; \u00D8 16 \u2014 ";
        text += static_cast<wchar_t>(0x4E00 + text.size() * 7919 % 0x5000);
    }
    text.resize(size);
    return text;
}

template <class ClassOf>
void lineBreak(benchmark::State& state, const std::wstring& text, ClassOf classOf) {
    std::uint64_t expected = 0;
    for (const wchar_t c : text)
        expected += static_cast<std::uint64_t>(classOf(c));
    for (auto _ : state) {
        std::uint64_t sum = 0;
        for (const wchar_t c : text)
            sum += static_cast<std::uint64_t>(classOf(c));
        if (sum != expected) {
            state.SkipWithError("another checksum");
            return;
        }
    }
}

int lineBreakOurs(wchar_t c) {
    return LmCodePage::LineBreakClass(c);
}

#if defined(TQ_BENCH_ICU)
int lineBreakIcu(wchar_t c) {
    return u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_LINE_BREAK);
}

// The numbers differ, and classes were split since ours were laid down, but each of theirs must be one of ours.
bool classesCorrespond(const std::wstring& text) {
    constexpr int kUnseen = -1;
    int ours[U_LB_COUNT];
    std::fill(std::begin(ours), std::end(ours), kUnseen);
    for (const wchar_t c : text) {
        int& known = ours[lineBreakIcu(c)];
        if (known == kUnseen)
            known = lineBreakOurs(c);
        if (known != lineBreakOurs(c))
            return false;
    }
    return true;
}

void lineBreakPeer(benchmark::State& state, const std::wstring& text) {
    if (classesCorrespond(text))
        lineBreak(state, text, lineBreakIcu);
    else
        state.SkipWithError("other classes");
}
#else
void lineBreakPeer(benchmark::State& state, const std::wstring&) {
    state.SkipWithError("missing");
}
#endif

const bool kRegistered = [] {
    struct Size {
        const char* name;
        std::size_t bytes;
    };
    for (const Size& size : {Size{"1KiB", kKiB}, Size{"1MiB", kMiB}}) {
        const auto add = [&size](const std::string& name, auto function, auto... arguments) {
            const auto at = name.rfind('/');
            const std::string full = "text/" + name.substr(0, at) + "_" + size.name + name.substr(at);
            bench::add(full, function, arguments...);
        };
        add("narrow_to_wide_ascii/ours", narrowToWide, asciiText(size.bytes));
        add("narrow_to_wide_ascii/mbstowcs", libraryToWide, asciiText(size.bytes), "C");
        add("narrow_to_wide_escapes/ours", narrowToWide, escapedText(size.bytes));
        add("narrow_to_wide_escapes/loop", convertByLoop<wchar_t, char>, escapedText(size.bytes), loopToWide);
        add("wide_to_narrow_ascii/ours", wideToNarrow, wideText(asciiText(size.bytes)));
        add("wide_to_narrow_ascii/wcstombs", libraryToNarrow, wideText(asciiText(size.bytes)), "C");
        add("wide_to_narrow_escapes/ours", wideToNarrow, accentedText(size.bytes));
        add("wide_to_narrow_escapes/loop", convertByLoop<char, wchar_t>, accentedText(size.bytes), loopToNarrow);
    }
    struct Short {
        const char* name;
        std::vector<std::string> texts;
    };
    for (const Short& each : {Short{"20_characters", textsOf20()}, Short{"1_to_60_characters", mixedShortTexts()}}) {
        const Texts<char> narrow(each.texts);
        const Texts<wchar_t> wide(wideTexts(each.texts));
        const std::string name = each.name;
        bench::add("text/narrow_to_wide_" + name + "/ours", narrowToWide, narrow);
        bench::add("text/narrow_to_wide_" + name + "/loop", convertByLoop<wchar_t, char>, narrow, loopToWide);
        bench::add("text/wide_to_narrow_" + name + "/ours", wideToNarrow, wide);
        bench::add("text/wide_to_narrow_" + name + "/loop", convertByLoop<char, wchar_t>, wide, loopToNarrow);
        bench::add("text/append_wide_" + name + "/ours", appendWide, narrow);
        bench::add("text/append_wide_" + name + "/loop", appendByLoop<wchar_t, char>, narrow, loopToWide);
        bench::add("text/append_narrow_" + name + "/ours", appendNarrow, wide);
        bench::add("text/append_narrow_" + name + "/loop", appendByLoop<char, wchar_t>, wide, loopToNarrow);
    }
    struct Script {
        const char* name;
        std::wstring text;
    };
    constexpr std::size_t kCharacters = 300000;
    const std::wstring latin = L"abcdefghijklmnopqrstuvwxyz \u00E9\u00E8\u00FC\u00F6\u00DF";
    for (const Script& script :
         {Script{"ascii", wideText(asciiText(kCharacters))}, Script{"latin", randomText(kCharacters, latin)},
          Script{"mixed", randomText(kCharacters, latin + latin + L"\u4E2D\u6587\u56FE\u7EB8\u0416\u20AC")},
          Script{"east_asian", eastAsianText(kCharacters)}}) {
        const std::string name = script.name;
        const std::string utf8 = utf8Of(script.text);
        bench::add("text/utf8_to_wide_" + name + "/ours", utf8ToWide, utf8);
        bench::add("text/utf8_to_wide_" + name + "/mbstowcs", libraryToWide, utf8, "C.UTF-8");
        bench::add("text/utf8_to_wide_" + name + "/codecvt", facetToWide, utf8);
        bench::add("text/utf8_to_wide_" + name + "/icu", icuFromUtf8, utf8);
        bench::add("text/wide_to_utf8_" + name + "/ours", wideToUtf8, script.text);
        bench::add("text/wide_to_utf8_" + name + "/wcstombs", libraryToNarrow, script.text, "C.UTF-8");
        bench::add("text/wide_to_utf8_" + name + "/codecvt", facetToUtf8, script.text);
        bench::add("text/wide_to_utf8_" + name + "/icu", icuToUtf8, script.text);
    }
    bench::add("text/iterate_plain_1MiB/ours", iterate, asciiText(kMiB), Sum(sumOfIterator));
    bench::add("text/iterate_plain_1MiB/loop", iterate, asciiText(kMiB), Sum(sumOfLoop));
    bench::add("text/iterate_escapes_1MiB/ours", iterate, escapedText(kMiB), Sum(sumOfIterator));
    bench::add("text/iterate_escapes_1MiB/loop", iterate, escapedText(kMiB), Sum(sumOfLoop));
    bench::add("text/iterate_dense_escapes_1MiB/ours", iterate, denseEscapes(kMiB), Sum(sumOfIterator));
    bench::add("text/iterate_dense_escapes_1MiB/loop", iterate, denseEscapes(kMiB), Sum(sumOfLoop));
    const std::wstring note = noteText(kMiB);
    bench::add("text/line_break_1MiB/ours", lineBreak<int (*)(wchar_t)>, note, lineBreakOurs);
    bench::add("text/line_break_1MiB/icu", lineBreakPeer, note);
    return true;
}();

} // namespace
