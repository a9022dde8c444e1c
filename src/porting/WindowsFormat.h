#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace tq::detail {

/// A printf format as Windows reads it, written anew as the C library reads it, for functions of the width of `Char`.
/// What is written is at most four times as long as the format, and lies in the object or, when long, in one block.
template <class Char>
class WindowsFormat {
public:
    /// Null has no form for the C library, and neither has a format with a directive that Windows does not know, or
    /// with
    /// `%n`, which it refuses: `errno` is EINVAL then, ENOMEM without memory, and else left alone.
    explicit WindowsFormat(const Char* format) noexcept;
    WindowsFormat(const WindowsFormat&) = delete;
    WindowsFormat& operator=(const WindowsFormat&) = delete;

    /// The format for the C library, null when there is none.
    const Char* text() const noexcept { return m_text; }

private:
    struct Free {
        void operator()(Char* room) const noexcept { std::free(room); }
    };
    static constexpr std::size_t kSmallSize = 512;

    Char m_small[kSmallSize];
    std::unique_ptr<Char, Free> m_large;
    const Char* m_text = nullptr;
};

extern template class WindowsFormat<char>;
extern template class WindowsFormat<wchar_t>;

} // namespace tq::detail
