#include "base/Utf8.h"
#include "codepage/Escapes.h"
#include "codepage/SpareRoom.h"
#include "codepage/TextKernels.h"
#include "codepage/VectorOutput.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <cstddef>
#include <cstring>

using namespace tq::detail;

namespace {

// The only character of a 0-terminated UTF-8 text, or a question mark.
wchar_t onlyUtf8Character(const char* src) {
    char32_t character = 0;
    if (src == nullptr || *src == '\0')
        return L'?';
    const std::size_t length = decodeUtf8(src, character);
    return length != 0 && src[length] == '\0' ? static_cast<wchar_t>(character) : L'?';
}

} // namespace

void TqCharMapper::multiByteToWideChar(code_page_id, const char* src, int length, TqVector<wchar_t>& out) {
    const bool hasText = length > 0 && src != nullptr;
    const auto keeper = recordWith(out, src);
    if (hasText && appendShort(currentKernels().shortNarrowToWide, src, static_cast<std::size_t>(length), out))
        return;
    const char* end = src;
    if (hasText)
        end = endAfterLastEscape(src, src + ::strnlen(src, static_cast<std::size_t>(length)));
    const int slots = out.physicalLength();
    const auto earlier = static_cast<std::size_t>(out.logicalLength());
    wchar_t* elements = resize(out, earlier + static_cast<std::size_t>(end - src) + 1);
    wchar_t* textEnd = elements + earlier;
    if (hasText)
        textEnd = currentKernels().narrowToWide(src, end, textEnd);
    terminate(out, elements, textEnd, slots);
}

void TqCharMapper::multiByteToWideChar(code_page_id id, unsigned int, const char* src, int length,
                                       TqVector<wchar_t>& out) {
    if (id != kCodePageUtf8) {
        multiByteToWideChar(id, src, length, out);
        return;
    }
    const wchar_t character = onlyUtf8Character(src); // which may lie in the vector
    const auto earlier = static_cast<std::size_t>(out.logicalLength());
    resize(out, earlier + 1)[earlier] = character;
}
