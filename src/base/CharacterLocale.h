#pragma once

namespace tq::detail {

/// Makes UTF-8 the encoding of the process's C locale (its character category alone), unless it is so already. On a
/// system without such a locale nothing changes. `errno` is left alone.
void useUtf8Characters() noexcept;

/// UTF-8 as the encoding of this thread alone, while the object lives. Without such a locale nothing changes.
class Utf8Thread {
public:
    Utf8Thread() noexcept;
    Utf8Thread(const Utf8Thread&) = delete;
    Utf8Thread& operator=(const Utf8Thread&) = delete;
    ~Utf8Thread();

private:
    void* m_locale = nullptr;
    void* m_before = nullptr;
};

/// True when the process's C locale (its character category) is "C" or "POSIX".
bool isPlainLocale() noexcept;

} // namespace tq::detail
