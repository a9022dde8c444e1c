#include "memory/HeapConfigurator.h"

#include "platform/VirtualMemory.h"

namespace tq::detail {

namespace {

// The hints repeat after this counter.
constexpr std::uint32_t kLastDistinctCounter = 4;

constexpr bool isAcceptable(std::uintptr_t address) {
    return address != 0 && address % kSegmentBytes == 0;
}

void setStart(std::uintptr_t address) {
    __atomic_store_n(&TqHeapConfigurator::pStartAddress, address, __ATOMIC_RELAXED);
}

} // namespace

constinit std::uintptr_t TqHeapConfigurator::pStartAddress = kNoReservation;
constinit std::size_t TqHeapConfigurator::pagesOfSystemPage = 1;

bool TqHeapConfigurator::reserveMemory() noexcept {
    static std::uint32_t PREADDRVALUE = 1;
    pagesOfSystemPage = platform::pageBytes() / kPageBytes;
    if (!platform::choosesOwnLayout()) {
        for (; PREADDRVALUE <= kLastDistinctCounter; ++PREADDRVALUE) {
            const std::uintptr_t hint = hintAddress(PREADDRVALUE);
            if (!platform::reserveAt(hint, kReservationBytes))
                continue;
            if (isAcceptable(hint)) {
                setStart(hint);
                return true;
            }
            platform::unreserve(hint, kReservationBytes);
        }
    }
    const std::uintptr_t address = platform::reserveAnywhere(kReservationBytes, kSegmentBytes);
    if (!isAcceptable(address))
        return false;
    setStart(address);
    return true;
}

} // namespace tq::detail
