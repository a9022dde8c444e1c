#include "codepage/Escapes.h"
#include "codepage/SpareRoom.h"
#include "codepage/TextKernels.h"
#include "codepage/TextMeasure.h"
#include "codepage/VectorOutput.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <cstddef>

using namespace tq::detail;

namespace {

bool isBackslashAmongEight(const wchar_t* src) {
    bool isThere = false;
    for (int i = 0; i < 8; ++i)
        isThere |= src[i] == L'\\';
    return isThere;
}

// Whether what was converted is the whole text. Where a backslash among the last characters may begin an escape that
// runs beyond the limit, and in the shortest texts, the answer is left to a closer look.
bool isSurelyWhole(const TextProgress& done, const wchar_t* src, std::size_t limit) {
    if (done.taken < limit)
        return done.taken != 0 && src[done.taken] == 0;
    return limit >= 8 && !isBackslashAmongEight(src + limit - 8);
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
    if (appendShort(kernels.shortWideToNarrow, src, limit, out))
        return;
    TextProgress start = fillSpareRoom(kernels.wideToNarrowUnmeasured, src, limit, out);
    if (isSurelyWhole(start, src, limit)) {
        keepWithTerminator(start.written, out);
        return;
    }
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
