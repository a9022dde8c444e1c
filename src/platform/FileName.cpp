#include "platform/FileName.h"

#include "platform/Utf8.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>

namespace tq::platform {

namespace {

bool toLocaleEncoding(const wchar_t* name, std::string& out) {
    constexpr auto kNotExpressible = static_cast<std::size_t>(-1);
    const std::size_t length = std::wcstombs(nullptr, name, 0);
    if (length == kNotExpressible)
        return false;
    out.resize(length); // the terminator has a place of its own behind these
    return std::wcstombs(out.data(), name, length + 1) == length;
}

bool toUtf8(const wchar_t* name, std::string& out) {
    out.clear();
    for (; *name != L'\0'; ++name) {
        char sequence[kMaxUtf8Length];
        const std::size_t length = encodeUtf8(static_cast<char32_t>(*name), sequence);
        if (length == 0)
            return false;
        out.append(sequence, length);
    }
    return true;
}

} // namespace

bool toFileName(const wchar_t* name, std::string& out) {
    const int before = errno;
    const bool isExpressible = toLocaleEncoding(name, out) || toUtf8(name, out);
    errno = before;
    return isExpressible;
}

} // namespace tq::platform
