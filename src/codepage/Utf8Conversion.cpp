#include "codepage/TextKernels.h"
#include "codepage/TextMeasure.h"
#include "codepage/VectorOutput.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <cstddef>
#include <cstring>

using namespace tq::detail;

namespace {

// The bytes from which sequences may begin: the one at index `length` is among them.
std::size_t utf8Extent(const char* src, int length) {
    if (src == nullptr || length < 0)
        return 0;
    return length == 0 ? std::strlen(src) : ::strnlen(src, static_cast<std::size_t>(length) + 1);
}

} // namespace

void TqCharMapper::utf8ToUnicode(const char* src, int length, TqVector<wchar_t>& out) {
    const std::size_t extent = utf8Extent(src, length);
    const auto keeper = recordWith(out, src);
    const int slots = out.physicalLength();
    wchar_t* elements = resize(out, extent + 1);
    wchar_t* textEnd = extent == 0 ? elements : currentKernels().utf8ToWide(src, src + extent, elements);
    terminate(out, elements, textEnd, slots);
}

void TqCharMapper::unicodeToUtf8(const wchar_t* src, int length, TqVector<char>& out) {
    if (src == nullptr || length == 0)
        return;
    // The character at index `length` belongs to the text.
    const std::size_t limit = length < 0 ? 0 : static_cast<std::size_t>(length) + 1;
    const TextMeasure text = measure(src, limit, currentKernels().wideToUtf8Size);
    const auto keeper = recordWith(out, src);
    const auto earlier = static_cast<std::size_t>(out.logicalLength());
    char* textBegin = resize(out, earlier + text.size + 1) + earlier;
    *currentKernels().wideToUtf8(src, src + text.count, textBegin) = 0;
}
