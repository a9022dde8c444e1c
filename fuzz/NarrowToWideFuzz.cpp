// Narrow text to wide: every form of the inner loop gives the same characters, the vector's lengths are right, and a
// text that has been through both ways once does not change any more.

#include "Check.h"
#include "codepage/Escapes.h"
#include "reference/KernelChoice.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace detail = tq::detail;
using Kernel = wchar_t* (*)(const char*, const char*, wchar_t*) noexcept;

std::wstring run(Kernel kernel, const char* src, const char* end) {
    std::vector<wchar_t> room(static_cast<std::size_t>(end - src) + 1);
    const wchar_t* written = kernel(src, end, room.data());
    return {static_cast<const wchar_t*>(room.data()), written};
}

// Into a vector that must make room, or has some for a short text.
std::wstring toWide(const char* text, int length, int slots = 0) {
    TqVector<wchar_t> out(slots);
    TqCharMapper::multiByteToWideChar(kCodePageWestern, text, length, out);
    fuzz::check(out.logicalLength() >= 1, "the terminator counts");
    fuzz::check(out[out.logicalLength() - 1] == 0, "the text is terminated");
    return {std::as_const(out).asArrayPtr(), static_cast<std::size_t>(out.logicalLength()) - 1};
}

std::string toNarrow(const std::wstring& text) {
    TqVector<char> out;
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, text.c_str(), INT_MAX, out);
    return std::as_const(out).asArrayPtr();
}

// What decoding never leaves behind: then the text means the same after any number of round trips. An escape of the
// character 0 ends the text, and escapes of a backslash may put a new escape together.
bool isStable(const std::wstring& text) {
    return std::find(text.begin(), text.end(), L'\0') == text.end() && text.find(L'\\') == std::wstring::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    // The first byte chooses the length; the exact-size copy lets the tools see a read past the terminator.
    std::vector<char> text(data + 1, data + size);
    text.push_back('\0');
    const std::size_t present = std::strlen(text.data());
    const int lengths[] = {static_cast<int>(data[0]), static_cast<int>(present), INT_MAX};
    for (const int length : lengths) {
        const std::wstring result = toWide(text.data(), length);
        for (const int slots : {8, 21, 40})
            fuzz::check(toWide(text.data(), length, slots) == result, "the room at hand changes nothing");
        const char* src = text.data();
        const char* end = detail::endAfterLastEscape(src, src + std::min(present, static_cast<std::size_t>(length)));
        fuzz::check(end <= src + present, "an escape ends before the terminator");
        fuzz::check(result.size() <= static_cast<std::size_t>(end - src), "no byte becomes two characters");
        for (const detail::TextKernels* kernels : reference::kernelForms())
            fuzz::check(run(kernels->narrowToWide, src, end) == result, "every form and the conversion agree");
        if (isStable(result)) {
            const std::string narrow = toNarrow(result);
            fuzz::check(toWide(narrow.c_str(), INT_MAX) == result, "wide to narrow to wide is the same text");
            fuzz::check(toNarrow(toWide(narrow.c_str(), INT_MAX)) == narrow, "narrow form is stable");
        }
    }
    return 0;
}
