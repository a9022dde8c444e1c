#pragma once

#include "reference/Testing.h"

namespace probe {

/// The text that the engine writes; the test fails unless the result is its length.
template <class... Arguments>
std::wstring format(const wchar_t* format, Arguments... arguments) {
    wchar_t buffer[4096];
    const int length = FormatUtil::outputStringWithFormat(buffer, 4096, format, arguments...);
    const std::wstring text(buffer);
    EXPECT_EQ(length, static_cast<int>(text.size())) << "format " << std::string(format, format + std::wcslen(format));
    return text;
}

} // namespace probe
