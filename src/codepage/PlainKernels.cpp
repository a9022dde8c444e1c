#include "codepage/CharacterSteps.h"
#include "codepage/TextKernels.h"
#include "codepage/TextMeasure.h"

namespace tq::detail {

namespace {

wchar_t* narrowToWide(const char* src, const char* end, wchar_t* out) noexcept {
    while (src < end)
        stepNarrowToWide(src, out);
    return out;
}

char* wideToNarrow(const wchar_t* src, const wchar_t* end, char* out) noexcept {
    while (src < end)
        stepWideToNarrow(src, out);
    return out;
}

wchar_t* utf8ToWide(const char* src, const char* end, wchar_t* out) noexcept {
    while (src < end)
        stepUtf8ToWide(src, out);
    return out;
}

char* wideToUtf8(const wchar_t* src, const wchar_t* end, char* out) noexcept {
    while (src < end)
        stepWideToUtf8(src, out);
    return out;
}

std::size_t wideToNarrowSize(const wchar_t* src, std::size_t count) noexcept {
    std::size_t size = 0;
    char bytes[kUnicodeEscapeLength];
    for (const wchar_t* const end = src + count; src < end;) {
        char* out = bytes;
        stepWideToNarrow(src, out);
        size += static_cast<std::size_t>(out - bytes);
    }
    return size;
}

std::size_t wideToUtf8Size(const wchar_t* src, std::size_t count) noexcept {
    std::size_t size = 0;
    char bytes[3];
    for (const wchar_t* const end = src + count; src < end;) {
        char* out = bytes;
        stepWideToUtf8(src, out);
        size += static_cast<std::size_t>(out - bytes);
    }
    return size;
}

} // namespace

constinit const TextKernels kPlainKernels = {narrowToWide,     wideToNarrow,   utf8ToWide,     wideToUtf8,
                                             wideToNarrowSize, utf8ToWideSize, wideToUtf8Size, nullptr,
                                             nullptr,          nullptr,        nullptr};

} // namespace tq::detail
