#include "codepage/SpareRoom.h"
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

// Room for the characters of a text, one per byte at most. For a vector that has no room for that many they are
// counted: texts of three bytes a character would else be allocated twice and copied.
std::size_t wideRoom(const char* src, std::size_t extent, std::size_t slots) {
    return extent < slots || extent < kUtf8Scratch ? extent
                                                   : currentKernels().utf8ToWideSize(src, extent) + kUtf8Scratch;
}

} // namespace

void TqCharMapper::utf8ToUnicode(const char* src, int length, TqVector<wchar_t>& out) {
    const std::size_t extent = utf8Extent(src, length);
    const auto keeper = recordWith(out, src);
    const int slots = out.physicalLength();
    wchar_t* elements = resize(out, wideRoom(src, extent, static_cast<std::size_t>(slots)) + 1);
    wchar_t* textEnd = extent == 0 ? elements : currentKernels().utf8ToWide(src, src + extent, elements);
    terminate(out, elements, textEnd, slots);
}

void TqCharMapper::unicodeToUtf8(const wchar_t* src, int length, TqVector<char>& out) {
    if (src == nullptr || length == 0)
        return;
    // The character at index `length` belongs to the text.
    const std::size_t limit = length < 0 ? 0 : static_cast<std::size_t>(length) + 1;
    const TextKernels& kernels = currentKernels();
    const auto keeper = recordWith(out, src);
    const TextProgress atHand = fillSpareRoom(kernels.wideToUtf8Unmeasured, src, limit, out);
    if (atHand.taken != 0 && (atHand.taken == limit || src[atHand.taken] == 0)) {
        keepWithTerminator(atHand.written, out);
        return;
    }
    const auto earlier = static_cast<std::size_t>(out.logicalLength());
    const TextMeasure text = measure(src, limit, kernels.wideToUtf8Size);
    char* const bytes = resize(out, earlier + text.size + 1) + earlier;
    TextProgress most;
    if (kernels.wideToUtf8Unmeasured != nullptr)
        most = kernels.wideToUtf8Unmeasured(src, text.count, bytes, text.size);
    *kernels.wideToUtf8(src + most.taken, src + text.count, bytes + most.written) = 0;
}
