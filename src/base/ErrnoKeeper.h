#pragma once

#include <cerrno>

namespace tq::detail {

/// `errno` as it was, at the end of its life: for steps of the library's own that the caller did not ask for.
class ErrnoKeeper {
public:
    ErrnoKeeper() = default;
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;
    ~ErrnoKeeper() { errno = m_before; }

private:
    const int m_before = errno;
};

} // namespace tq::detail
