#include "codepage/AsciiRun.h"
#include "codepage/Escapes.h"
#include "codepage/TextKernels.h"
#include "codepage/TextMeasure.h"
#include "codepage/VectorOutput.h"
#include "containers/SourceKeeper.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>

using namespace tq::detail;

namespace {

// Converts what is ASCII at the beginning of the text into room that the vector has behind its elements, where there is
// any: that needs no measuring. Returns the number of characters, and changes nothing that the vector counts.
std::size_t fillSpareRoom(const wchar_t* src, std::size_t length, TqVector<char>& out) {
    const int spare = out.physicalLength() - out.logicalLength() - 1;
    if (spare <= 0)
        return 0;
    constexpr std::size_t kStretch = 2048;
    const std::size_t most = std::min(length, static_cast<std::size_t>(spare));
    char* const end = out.asArrayPtr() + out.logicalLength();
    // The end of the text is looked for first: nothing behind it may be read.
    std::size_t done = 0;
    std::size_t found = kStretch;
    for (std::size_t run = kStretch; run == kStretch && found == kStretch; done += run) {
        found = ::wcsnlen(src + done, std::min(kStretch, most - done));
        run = narrowAsciiRun(src + done, found, end + done);
    }
    return done;
}

// The text from `begin` on, and the bytes that it becomes; its last escape may reach beyond its length.
struct WideText {
    const wchar_t* end;
    std::size_t size;

    WideText(const wchar_t* begin, std::size_t length) {
        const TextMeasure text = measure(begin, length, wideToNarrowSize);
        // Escapes are ASCII: copying one is copying its characters, and only its length matters.
        end = endBehindLastEscape(begin, begin + text.count);
        size = text.size + static_cast<std::size_t>(end - (begin + text.count));
    }
};

} // namespace

void TqCharMapper::wideCharToMultiByte(code_page_id, const wchar_t* src, int length, TqVector<char>& out) {
    const auto earlier = static_cast<std::size_t>(out.logicalLength());
    if (length <= 0 || src == nullptr) {
        char* const elements = resize(out, earlier + 1);
        terminate(out, elements, elements + earlier);
        return;
    }
    const SourceKeeper keeper(out, src);
    const auto limit = static_cast<std::size_t>(length);
    std::size_t done = fillSpareRoom(src, limit, out);
    // The last characters of the run may begin an escape that ends behind them.
    done -= std::min(done, kMifEscapeLength);
    WideText rest(src + done, limit - done);
    if (done != 0 && earlier + done + rest.size + 1 > static_cast<std::size_t>(out.physicalLength())) {
        rest = WideText(src, limit);
        done = 0;
    }
    char* const elements = resize(out, earlier + done + rest.size + 1);
    char* const textEnd = kWideKernels.wideToNarrow(src + done, rest.end, elements + earlier + done);
    terminate(out, elements, textEnd);
}
