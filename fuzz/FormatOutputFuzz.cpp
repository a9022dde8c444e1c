// Any format, the first byte a capacity: what is written stays inside it and is terminated, the result is the length of
// the text, and a text that fits is the one that a large buffer gets.

#include "Check.h"

#include <TqOsBase/format/FormatUtil.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <vector>

namespace {

// All general arguments are this string, so that every letter may take any of them, as an integer too. The doubles lie
// in registers of their own, all of them; where one stack holds all arguments, they come after more strings than are
// ever taken.
constexpr const wchar_t* kText = L"text \u4e2d";
constexpr std::ptrdiff_t kMaxDoubles = 7;
constexpr std::ptrdiff_t kMaxArguments = 24;

int format(wchar_t* out, int capacity, const wchar_t* format) {
    const wchar_t* const t = kText;
    return FormatUtil::outputStringWithFormat(out, capacity, format, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t, t,
                                              t, t, t, t, t, t, t, 1.5, -0.0, 1e300, 2.0 / 3, -1234.5678, 5e-324, 77.0,
                                              0.125);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const int capacity = 1 + data[0];
    const std::wstring text(data + 1, data + size);
    const auto percents = std::count(text.begin(), text.end(), L'%');
    if (percents > kMaxDoubles || percents + std::count(text.begin(), text.end(), L'*') > kMaxArguments)
        return 0;

    std::vector<wchar_t> buffer(static_cast<std::size_t>(capacity), L'#');
    const int result = format(buffer.data(), capacity, text.c_str());
    const auto end = std::find(buffer.begin(), buffer.end(), L'\0');
    fuzz::check(end != buffer.end(), "the text is terminated inside its capacity");
    // A missing argument of %c is a 0 inside the text.
    fuzz::check(result < capacity && (result <= 0 || (buffer[static_cast<std::size_t>(result)] == 0)),
                "the result is the length of the text");

    std::vector<wchar_t> large(8192);
    const int length = format(large.data(), static_cast<int>(large.size()), text.c_str());
    // Literal text that does not even fit the large buffer gives 0 too, after what was written before.
    const bool fits = length > 0 || (length == 0 && large[0] == L'\0' && result != 0);
    if (fits && length < capacity) {
        fuzz::check(result == length, "what fits a large buffer with room for it fits");
        fuzz::check(std::equal(buffer.begin(), buffer.begin() + length + 1, large.begin()),
                    "the text does not depend on the capacity");
    }
    return 0;
}
