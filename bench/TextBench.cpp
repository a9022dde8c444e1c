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
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#if defined(TQ_BENCH_ICU)
#include <unicode/uchar.h>
#endif

namespace {

[[maybe_unused]] const bool kIsChosen = reference::chooseKernels();

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * kKiB;
constexpr std::size_t kEscapeEvery = 64;

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
        text.replace(i, 7, "\\U+4E2D");
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

std::wstring eastAsianText(std::size_t utf8Size) {
    std::wstring text(utf8Size / 3, L'\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<wchar_t>(0x4E00 + i * 7919 % 0x5000);
    return text;
}

std::string utf8Of(const std::wstring& text) {
    TqVector<char> out;
    TqCharMapper::unicodeToUtf8(text.c_str(), static_cast<int>(text.size()), out);
    return std::as_const(out).asArrayPtr();
}

// As the application does it: one vector for many texts.
void narrowToWide(benchmark::State& state, const std::string& text) {
    TqVector<wchar_t> out;
    for (auto _ : state) {
        out.setLogicalLength(0);
        TqCharMapper::multiByteToWideChar(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void wideToNarrow(benchmark::State& state, const std::wstring& text) {
    TqVector<char> out;
    for (auto _ : state) {
        out.setLogicalLength(0);
        TqCharMapper::wideCharToMultiByte(kCodePageWestern, text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void utf8ToWide(benchmark::State& state, const std::string& text) {
    TqVector<wchar_t> out;
    for (auto _ : state) {
        TqCharMapper::utf8ToUnicode(text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void wideToUtf8(benchmark::State& state, const std::wstring& text) {
    TqVector<char> out;
    for (auto _ : state) {
        out.setLogicalLength(0);
        TqCharMapper::unicodeToUtf8(text.c_str(), static_cast<int>(text.size()), out);
        benchmark::DoNotOptimize(out.asArrayPtr());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void libraryToWide(benchmark::State& state, const std::string& text, const char* locale) {
    std::setlocale(LC_ALL, locale);
    std::vector<wchar_t> out(text.size() + 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::mbstowcs(out.data(), text.c_str(), out.size()));
    std::setlocale(LC_ALL, "C");
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void libraryToNarrow(benchmark::State& state, const std::wstring& text, const char* locale) {
    std::setlocale(LC_ALL, locale);
    std::vector<char> out(text.size() * 4 + 1);
    for (auto _ : state)
        benchmark::DoNotOptimize(std::wcstombs(out.data(), text.c_str(), out.size()));
    std::setlocale(LC_ALL, "C");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

int hexDigit(int c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const int lower = c | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

void scalarToWide(benchmark::State& state, const std::string& text) {
    std::vector<wchar_t> room(text.size() + 1);
    for (auto _ : state) {
        const char* p = text.c_str();
        const char* end = p + text.size();
        wchar_t* out = room.data();
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
        *out = 0;
        benchmark::DoNotOptimize(room.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void scalarToNarrow(benchmark::State& state, const std::wstring& text) {
    std::vector<char> room(text.size() * 7 + 1);
    for (auto _ : state) {
        const wchar_t* p = text.c_str();
        const wchar_t* end = p + text.size();
        char* out = room.data();
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
        *out = 0;
        benchmark::DoNotOptimize(room.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.size()));
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
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * narrow.size()));
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
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * text.size()));
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
        add("narrow_to_wide_escapes/loop", scalarToWide, escapedText(size.bytes));
        add("wide_to_narrow_ascii/ours", wideToNarrow, wideText(asciiText(size.bytes)));
        add("wide_to_narrow_ascii/wcstombs", libraryToNarrow, wideText(asciiText(size.bytes)), "C");
        add("wide_to_narrow_escapes/ours", wideToNarrow, accentedText(size.bytes));
        add("wide_to_narrow_escapes/loop", scalarToNarrow, accentedText(size.bytes));
    }
    const std::wstring wide = eastAsianText(kMiB);
    const std::string utf8 = utf8Of(wide);
    bench::add("text/utf8_to_wide_1MiB/ours", utf8ToWide, utf8);
    bench::add("text/utf8_to_wide_1MiB/mbstowcs", libraryToWide, utf8, "C.UTF-8");
    bench::add("text/wide_to_utf8_1MiB/ours", wideToUtf8, wide);
    bench::add("text/wide_to_utf8_1MiB/wcstombs", libraryToNarrow, wide, "C.UTF-8");
    bench::add("text/iterate_1MiB/ours", iterate, escapedText(kMiB), Sum(sumOfIterator));
    bench::add("text/iterate_1MiB/loop", iterate, escapedText(kMiB), Sum(sumOfLoop));
    const std::wstring note = noteText(kMiB);
    bench::add("text/line_break_1MiB/ours", lineBreak<int (*)(wchar_t)>, note, lineBreakOurs);
    bench::add("text/line_break_1MiB/icu", lineBreakPeer, note);
    return true;
}();

} // namespace
