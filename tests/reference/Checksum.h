#pragma once

#include "reference/Testing.h"

namespace reference {

/// One number for a long sequence (64-bit FNV-1a, a whole number at a time). A test holds it where a table would only
/// be typed a second time. The numbers in the tests were made from the published facts by other programs, not by the
/// library.
class Checksum {
public:
    void add(std::int64_t value) { m_sum = (m_sum ^ static_cast<std::uint64_t>(value)) * 0x100000001B3; }
    std::uint64_t sum() const { return m_sum; }

private:
    std::uint64_t m_sum = 0xCBF29CE484222325;
};

/// Of what a function gives for each of a range of numbers, both ends included.
template <class Function>
std::uint64_t checksum(int first, int last, const Function& valueOf) {
    Checksum result;
    for (int i = first; i <= last; ++i)
        result.add(valueOf(i));
    return result.sum();
}

} // namespace reference
