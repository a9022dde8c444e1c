#include "codepage/CharacterSteps.h"
#include "codepage/TextKernels.h"

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

} // namespace

constinit const TextKernels kPlainKernels = {narrowToWide, wideToNarrow, utf8ToWide, wideToUtf8};

} // namespace tq::detail
