#pragma once

#include <cstddef>
#include <cstdint>

namespace macho {

/// The thread-local variables of one image. A macOS program reaches each through a descriptor, whose first word is a
/// function that gives this thread's address of it, and which may change only the register of the result.
class ThreadLocals {
public:
    /// The variables' initial contents, in the image. The block of a thread is made when it first asks.
    ThreadLocals(const std::uint8_t* contents, std::size_t size);

    /// Makes the descriptors in [section, section + size) answer for this image.
    void prepare(std::uint8_t* section, std::uint64_t size) const;

private:
    std::uint64_t m_key;
};

} // namespace macho
