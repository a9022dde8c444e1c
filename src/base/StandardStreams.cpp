#include "base/StandardStreams.h"

#include "base/LocaleText.h"
#include "platform/File.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>

namespace tq::detail {

namespace {

std::string formatted(const char* format, std::va_list arguments) {
    std::va_list copy;
    va_copy(copy, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer does not follow va_copy from a parameter
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

} // namespace

bool canPrintWide(const wchar_t* text) {
    std::string ignored;
    return std::fwide(stdout, 0) > 0 && toLocaleText(text, ignored);
}

void printNarrow(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    vprintNarrow(format, arguments);
    va_end(arguments);
}

void vprintNarrow(const char* format, std::va_list arguments) {
    if (std::fwide(stdout, 0) <= 0) {
        std::vprintf(format, arguments); // NOLINT(clang-analyzer-valist.Uninitialized): likewise
        return;
    }
    const std::string text = formatted(format, arguments);
    std::fflush(stdout);
    platform::writeDescriptor(platform::descriptorOf(stdout), text.data(), text.size());
}

void writeToStandardError(const char* text) noexcept {
    platform::writeDescriptor(platform::kStandardError, text, std::strlen(text));
}

} // namespace tq::detail
