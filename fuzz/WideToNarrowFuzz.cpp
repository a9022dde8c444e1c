// Wide text to narrow and to UTF-8, and UTF-8 back: every form of the inner loops gives the same bytes, the measured
// size is the written one, and what one direction can express comes back unchanged.

#include "Check.h"
#include "codepage/Escapes.h"
#include "reference/KernelChoice.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

namespace {

namespace detail = tq::detail;

template <class From, class To>
std::basic_string<To> run(To* (*kernel)(const From*, const From*, To*) noexcept, const From* src, const From* end,
                          std::size_t size) {
    std::vector<To> room(size + 1);
    const To* written = kernel(src, end, room.data());
    return {static_cast<const To*>(room.data()), written};
}

template <class Char>
std::basic_string<Char> text(const TqVector<Char>& out) {
    fuzz::check(out.logicalLength() >= 1 && out[out.logicalLength() - 1] == 0, "the text is terminated");
    return {out.asArrayPtr(), static_cast<std::size_t>(out.logicalLength()) - 1};
}

// Bytes below 0xF0 are characters, the others begin one of three bytes, so that all sizes come up.
std::vector<wchar_t> charactersOf(const std::uint8_t* data, std::size_t size) {
    std::vector<wchar_t> characters;
    for (std::size_t i = 0; i < size; ++i) {
        std::uint32_t c = data[i];
        if (c >= 0xF0 && i + 2 < size) {
            c = (c & 0x0F) << 16 | static_cast<std::uint32_t>(data[i + 1]) << 8 | data[i + 2];
            c = (c >> 16) == 0x0F ? c | 0xFFF00000U : c;
            i += 2;
        }
        characters.push_back(static_cast<wchar_t>(c));
    }
    characters.push_back(L'\0');
    return characters;
}

void checkUnmeasured(detail::TextKernels::Unmeasured convert, decltype(detail::TextKernels::wideToNarrowSize) sizeOf,
                     const wchar_t* src, int length, const std::string& result) {
    for (const std::size_t size : {result.size() / 2, result.size(), result.size() + 64}) {
        if (convert == nullptr)
            break;
        std::vector<char> room(size);
        const auto [taken, written] = convert(src, static_cast<std::size_t>(length), room.data(), room.size());
        fuzz::check(sizeOf(src, taken) == written, "whole characters are taken");
        fuzz::check(result.compare(0, written, room.data(), written) == 0, "the unmeasured form agrees");
    }
}

void checkEscapedForm(const std::vector<wchar_t>& characters, int length) {
    const wchar_t* src = characters.data();
    TqVector<char> out;
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, src, length, out);
    const std::string result = text(out);
    const wchar_t* end = detail::endAfterLastEscape(src, src + ::wcsnlen(src, static_cast<std::size_t>(length)));
    for (const detail::TextKernels* kernels : reference::kernelForms()) {
        fuzz::check(kernels->wideToNarrowSize(src, static_cast<std::size_t>(end - src)) == result.size(), "measured");
        fuzz::check(run(kernels->wideToNarrow, src, end, result.size()) == result, "every form of wideToNarrow agrees");
        checkUnmeasured(kernels->wideToNarrowUnmeasured, kernels->wideToNarrowSize, src, length, result);
    }
}

void checkUtf8(const std::vector<wchar_t>& characters) {
    const wchar_t* src = characters.data();
    const std::size_t count = std::wcslen(src);
    const wchar_t* end = src + count;
    TqVector<char> out;
    TqCharMapper::unicodeToUtf8(src, INT_MAX, out);
    const std::string result = text(out);
    for (const detail::TextKernels* kernels : reference::kernelForms()) {
        fuzz::check(kernels->wideToUtf8Size(src, count) == result.size(), "measured size of UTF-8");
        fuzz::check(run(kernels->wideToUtf8, src, end, result.size()) == result, "every form of wideToUtf8 agrees");
        checkUnmeasured(kernels->wideToUtf8Unmeasured, kernels->wideToUtf8Size, src, INT_MAX, result);
    }

    const auto isRepresentable = [](wchar_t c) { return static_cast<std::uint32_t>(c) <= 0xFFFF; };
    if (std::all_of(src, end, isRepresentable)) {
        TqVector<wchar_t> back;
        TqCharMapper::utf8ToUnicode(result.c_str(), 0, back);
        fuzz::check(text(back) == std::wstring(src, count), "UTF-8 comes back unchanged");
    }
}

void checkDecoder(const std::uint8_t* data, std::size_t size) {
    std::vector<char> bytes(data, data + size);
    bytes.push_back('\0');
    const char* src = bytes.data();
    const std::size_t present = std::strlen(src);
    TqVector<wchar_t> out;
    TqCharMapper::utf8ToUnicode(src, 0, out);
    const std::wstring result = text(out);
    for (const detail::TextKernels* kernels : reference::kernelForms()) {
        fuzz::check(kernels->utf8ToWideSize(src, present) == result.size(), "measured size of wide text");
        fuzz::check(run(kernels->utf8ToWide, src, src + present, present) == result, "every form of utf8ToWide agrees");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::vector<wchar_t> characters = charactersOf(data + 1, size - 1);
    if (data[0] != 0)
        checkEscapedForm(characters, data[0]);
    checkEscapedForm(characters, INT_MAX);
    checkUtf8(characters);
    checkDecoder(data, size);
    return 0;
}
