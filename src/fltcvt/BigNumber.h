#pragma once

#include "fltcvt/DigitAllocator.h"

#include <utility>

namespace tq::detail {

/// Owner of a block, which it frees.
class BigNumber {
public:
    explicit BigNumber(Bigint* block = nullptr) noexcept : m_block(block) {}
    BigNumber(BigNumber&& other) noexcept : m_block(other.release()) {}
    BigNumber& operator=(BigNumber&& other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }
    ~BigNumber() {
        if (m_block != nullptr)
            giveBlock(m_block);
    }

    Bigint* get() const noexcept { return m_block; }
    Bigint* operator->() const noexcept { return m_block; }
    Bigint* release() noexcept { return std::exchange(m_block, nullptr); }

    void multiplyAdd(int factor, int addend) { m_block = TqGdImpl::multadd(release(), factor, addend); }
    void multiplyAddLong(std::uint64_t factor, std::uint64_t addend);
    /// Times 5^exponent; nothing for an exponent of 0 or less.
    void multiplyByPowerOfFive(int exponent);
    void shiftLeft(int bits) { m_block = TqGdImpl::lshift(release(), bits); }
    int compare(const BigNumber& other) const { return TqGdImpl::cmp(m_block, other.m_block); }
    bool isZero() const noexcept { return m_block->used == 1 && m_block->words[0] == 0; }

private:
    Bigint* m_block;
};

} // namespace tq::detail
