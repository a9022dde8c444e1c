// The MIF escape: what is written reads back, and what is no escape leaves the outputs alone.

#include "Check.h"

#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr std::size_t kLength = 8;
constexpr auto kUntouchedPage = static_cast<code_page_id>(-7);
constexpr auto kUntouchedValue = static_cast<wchar_t>(-7);

bool parse(const std::vector<unsigned char>& text, wchar_t& value, code_page_id& page) {
    return TqCharConverter::parseMIFString(static_cast<const unsigned char*>(text.data()), value, page);
}

std::vector<unsigned char> format(wchar_t digit, unsigned value, bool upper) {
    char text[kLength + 1];
    std::snprintf(text, sizeof text, upper ? "\\M+%c%04X" : "\\m+%c%04x", static_cast<char>(digit), value & 0xFFFF);
    return {text, text + sizeof text};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<unsigned char> text(data, data + size);
    text.push_back(0);
    wchar_t value = kUntouchedValue;
    code_page_id page = kUntouchedPage;
    if (parse(text, value, page)) {
        fuzz::check(std::strlen(reinterpret_cast<const char*>(text.data())) >= kLength, "an escape is whole");
        fuzz::check(static_cast<std::uint32_t>(value) <= 0xFFFF, "sixteen bits");
        fuzz::check(page == mapCodepage(static_cast<short>(text[3])), "the digit names the code page");
        const auto written = format(text[3], static_cast<unsigned>(value), true);
        bool same = true;
        for (std::size_t i = 0; i < kLength; ++i)
            same = same && (written[i] | 0x20) == (text[i] | 0x20);
        fuzz::check(same, "written again it is the same but for case");
    } else {
        fuzz::check(value == kUntouchedValue && page == kUntouchedPage, "a rejected text changes nothing");
    }

    // Any code of any double-byte code page goes through text and back.
    const unsigned code = size >= 2 ? static_cast<unsigned>(data[0]) << 8 | data[1] : 0;
    for (int id = kCodePageJapanese; id <= kCodePageJohab; ++id) {
        const auto expected = static_cast<code_page_id>(id);
        fuzz::check(parse(format(reMapCodepage(expected), code, size % 2 == 0), value, page),
                    "a written escape is one");
        fuzz::check(static_cast<unsigned>(value) == code && page == expected, "and reads back");
    }
    return 0;
}
