#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

/// Takes the arguments of a va_list one after the other and leaves the va_list itself as it is.
#if defined(__x86_64__)

/// As the System V ABI lays it out. It is read field by field into pointers of our own: va_copy takes several fields at
/// once, which waits for the caller's stores of the single ones.
class ArgumentCursor {
public:
    explicit ArgumentCursor(va_list args) {
        const void* const fields = args;
        const auto* const at = static_cast<const char*>(fields);
        m_registers = read<const char*>(at + kRegistersAt);
        m_general = m_registers + read<std::uint32_t>(at);
        m_floating = m_registers + read<std::uint32_t>(at + kFloatingAt);
        m_overflow = read<const char*>(at + kOverflowAt);
    }

    int nextInt() { return read<int>(nextGeneral()); }
    std::uint32_t nextUnsigned() { return read<std::uint32_t>(nextGeneral()); }
    std::int64_t nextInt64() { return read<std::int64_t>(nextGeneral()); }
    double nextDouble() {
        const bool isSaved = m_floating < m_registers + kFloatingEnd;
        return read<double>(isSaved ? step(m_floating, kFloatingSlot) : step(m_overflow, kSlot));
    }
    const wchar_t* nextString() { return read<const wchar_t*>(nextGeneral()); }
    template <class T>
    T* nextPointer() {
        return read<T*>(nextGeneral());
    }

private:
    // Its fields: how far the saved registers of both kinds are used up, the arguments on the stack, the registers.
    static constexpr std::size_t kFloatingAt = 4;
    static constexpr std::size_t kOverflowAt = 8;
    static constexpr std::size_t kRegistersAt = 16;
    static_assert(sizeof(va_list) == 24);
    static constexpr unsigned kSlot = 8;
    static constexpr unsigned kFloatingSlot = 16;
    static constexpr unsigned kGeneralEnd = 6 * kSlot;
    static constexpr unsigned kFloatingEnd = kGeneralEnd + 8 * kFloatingSlot;

    static const char* step(const char*& place, unsigned size) {
        const char* const slot = place;
        place += size;
        return slot;
    }
    const char* nextGeneral() {
        return m_general < m_registers + kGeneralEnd ? step(m_general, kSlot) : step(m_overflow, kSlot);
    }

    template <class T>
    static T read(const char* slot) {
        T value;
        std::memcpy(&value, slot, sizeof value);
        return value;
    }

    const char* m_registers;
    const char* m_general;
    const char* m_floating;
    const char* m_overflow;
};

#else

/// By the compiler's own means, in a copy that is advanced through a reference, also where a va_list is no array.
class ArgumentCursor {
public:
    explicit ArgumentCursor(va_list args) { va_copy(m_args, args); }
    ArgumentCursor(const ArgumentCursor&) = delete;
    ArgumentCursor& operator=(const ArgumentCursor&) = delete;
    ~ArgumentCursor() { va_end(m_args); }

    int nextInt() { return va_arg(m_args, int); }
    std::uint32_t nextUnsigned() { return va_arg(m_args, unsigned int); }
    std::int64_t nextInt64() { return va_arg(m_args, long long); }
    double nextDouble() { return va_arg(m_args, double); }
    const wchar_t* nextString() { return va_arg(m_args, const wchar_t*); }
    template <class T>
    T* nextPointer() {
        return va_arg(m_args, T*);
    }

private:
    va_list m_args;
};

#endif

} // namespace tq::detail
