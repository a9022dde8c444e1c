// Any source, a zero byte, and any format: the scan ends inside the source, stores inside what the widths allow, and
// counts no more fields than the format has.

#include "Check.h"
#include "reference/ScanInput.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr std::ptrdiff_t kMaxFields = 8;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::uint8_t* const split = std::find(data, data + size, std::uint8_t{0});
    if (split == data + size)
        return 0;
    // Vectors of exactly the text's size, so that the tools see a read beyond its end.
    std::vector<wchar_t> source(data, split + 1);
    const std::wstring format(split + 1, data + size);
    const auto fields = std::count(format.begin(), format.end(), L'%');
    if (fields > kMaxFields)
        return 0;
    // Room for the longest field: all of the source and a 0, or a number.
    std::vector<wchar_t> room(std::max<std::size_t>(source.size() + 1, 8));
    wchar_t* const r = room.data();
    const int assigned = reference::scan(source.data(), format.c_str(), r, r, r, r, r, r, r, r);
    fuzz::check(assigned >= -1 && assigned <= fields, "as many fields at most as the format has");
    const bool blank = std::all_of(source.begin(), source.end() - 1,
                                   [](wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); });
    fuzz::check((assigned == -1) == blank, "-1 is for sources without anything but white space");
    return 0;
}
