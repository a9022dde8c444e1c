#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// Address space and its pages, as the pooled heap needs them. Addresses and sizes are multiples of pageBytes().
namespace tq::platform {

/// True when the program is built with a tool that lays out the address space itself (address, thread or memory
/// sanitizer): an address of our own choosing may then lie in the tool's tables.
bool choosesOwnLayout() noexcept;

/// Size of the system's pages: a power of two, 4096 or more (16 KiB on Apple silicon, up to 64 KiB on arm64 Linux).
std::size_t pageBytes() noexcept;

/// Reserves `size` bytes without access rights at exactly `address` (0 included, where the system allows that).
/// Returns false, with nothing changed, when any part of the range is taken or the system refuses.
bool reserveAt(std::uintptr_t address, std::size_t size) noexcept;

/// Reserves `size` bytes without access rights where the system likes, at a multiple of `alignment`, a power of two.
/// Returns 0 when that cannot be had.
std::uintptr_t reserveAnywhere(std::size_t size, std::size_t alignment) noexcept;

/// Gives address space that was reserved back to the system.
void unreserve(std::uintptr_t address, std::size_t size) noexcept;

/// Makes reserved pages readable and writable. Returns false when the system refuses; nothing is changed then.
bool makeAccessible(void* address, std::size_t size) noexcept;

/// Takes all access rights from reserved pages. Their memory stays in use until it is given back.
void makeInaccessible(void* address, std::size_t size) noexcept;

/// Pages one after the other.
struct PageRun {
    void* address;
    std::size_t size; ///< In bytes.
};
/// What giveBack() takes at most.
inline constexpr std::size_t kMostPageRuns = 64;

/// Gives the memory of accessible pages back, keeping their access rights: what they held is lost, and they take
/// memory again when they are next written to. Where the system can do that, many runs in one call take a third less
/// time than as many calls.
void giveBack(std::span<const PageRun> runs) noexcept;

/// Bytes of the pages that hold memory, of the `size` mapped bytes from `address` on; 0 when the system does not tell.
std::size_t residentBytes(const void* address, std::size_t size) noexcept;

} // namespace tq::platform
