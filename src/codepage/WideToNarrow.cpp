#include "codepage/Escapes.h"
#include "codepage/TextKernels.h"
#include "codepage/TextMeasure.h"
#include "codepage/VectorOutput.h"
#include "containers/SourceKeeper.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <cstddef>

using namespace tq::detail;

void TqCharMapper::wideCharToMultiByte(code_page_id, const wchar_t* src, int length, TqVector<char>& out) {
    const bool hasText = length > 0 && src != nullptr;
    const wchar_t* end = src;
    std::size_t size = 0;
    if (hasText) {
        const TextMeasure text = measure(src, static_cast<std::size_t>(length), wideToNarrowSize);
        // Escapes are ASCII: copying one is copying its characters, and only its length matters.
        end = endBehindLastEscape(src, src + text.count);
        size = text.size + static_cast<std::size_t>(end - (src + text.count));
    }
    const SourceKeeper keeper(out, src);
    const auto earlier = static_cast<std::size_t>(out.logicalLength());
    char* elements = resize(out, earlier + size + 1);
    char* textEnd = elements + earlier;
    if (hasText)
        textEnd = kWideKernels.wideToNarrow(src, end, textEnd);
    terminate(out, elements, textEnd);
}
