#include "crtcompat/SystemName.h"

#include "base/FileName.h"

#include <cerrno>
#include <cstddef>

namespace tq::detail {

int systemName(const wchar_t* text, std::string& out) noexcept {
    constexpr std::size_t kSize = 1024; // bytes, with the terminator
    const int error = detail::fileNameError(text, out);
    return error == 0 && out.size() >= kSize ? ENAMETOOLONG : error;
}

} // namespace tq::detail
