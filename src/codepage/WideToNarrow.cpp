#include "codepage/Escapes.h"
#include "codepage/TextKernels.h"
#include "codepage/TextMeasure.h"
#include "codepage/VectorOutput.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <cstddef>

using namespace tq::detail;

namespace {

// Converts the text, or the beginning of it that fits, into room that the vector has after its elements: that needs no
// measuring, and changes nothing that the vector counts.
TextProgress fillSpareRoom(const TextKernels& kernels, const wchar_t* src, std::size_t limit, TqVector<char>& out) {
    const int spare = out.physicalLength() - out.logicalLength() - 1;
    if (spare <= 0 || kernels.wideToNarrowUnmeasured == nullptr)
        return {};
    return kernels.wideToNarrowUnmeasured(src, limit, out.asArrayPtr() + out.logicalLength(),
                                          static_cast<std::size_t>(spare));
}

// What of a text is still to be converted, and the bytes that it becomes.
struct WideText {
    const wchar_t* end;
    std::size_t size = 0;

    WideText(const TextKernels& kernels, const wchar_t* src, std::size_t taken, std::size_t limit) {
        std::size_t count = taken;
        if (taken < limit && src[taken] != 0) {
            const TextMeasure rest = measure(src + taken, limit - taken, kernels.wideToNarrowSize);
            count += rest.count;
            size = rest.size;
        }
        end = src + count;
        if (count < limit)
            return;
        // The last escape may reach beyond the limit, as in L"ab\\U+00E9" with a limit of 3. It is ASCII: copying it is
        // copying its characters.
        end = endAfterLastEscape(src, end);
        size += static_cast<std::size_t>(end - (src + count));
    }
};

} // namespace

void TqCharMapper::wideCharToMultiByte(code_page_id, const wchar_t* src, int length, TqVector<char>& out) {
    const auto earlier = static_cast<std::size_t>(out.logicalLength());
    if (length <= 0 || src == nullptr) {
        resize(out, earlier + 1)[earlier] = 0;
        return;
    }
    const auto keeper = recordWith(out, src);
    const auto limit = static_cast<std::size_t>(length);
    const TextKernels& kernels = currentKernels();
    TextProgress start = fillSpareRoom(kernels, src, limit, out);
    WideText rest(kernels, src, start.taken, limit);
    if (start.taken != 0 && earlier + start.written + rest.size + 1 > static_cast<std::size_t>(out.physicalLength())) {
        start = {};
        rest = WideText(kernels, src, 0, limit);
    }
    char* textEnd = resize(out, earlier + start.written + rest.size + 1) + earlier + start.written;
    if (rest.size != 0)
        textEnd = kernels.wideToNarrow(src + start.taken, rest.end, textEnd);
    *textEnd = 0;
}
