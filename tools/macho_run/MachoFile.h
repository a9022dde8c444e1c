#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/// What a Mach-O file of 64 bits says of itself. Only what zig's linker writes is understood: binding by opcodes, two
/// levels of names; anything else is refused by name.
namespace macho {

/// One of the parts that are mapped. Addresses are those that the file gives; the image lies elsewhere.
struct Segment {
    std::string name;
    std::uint64_t address, size, fileOffset, fileSize;
    bool isExecutable;
};

struct Section {
    enum Kind : std::uint8_t {
        kInitialisers = 0x09,
        kThreadLocalData = 0x11,
        kThreadLocalZeros = 0x12,
        kThreadLocalDescriptors = 0x13,
    };
    std::string name;
    std::uint64_t address, size;
    std::uint8_t kind;
};

struct Symbol {
    std::string_view name; ///< with its underscore
    std::uint64_t address;
};

using Bytes = std::span<const std::uint8_t>;

/// A file, mapped for reading, and its load commands. What it hands out lives as long as it does.
class MachoFile {
public:
    /// Reads `path`, which must be for this processor. Ends the process with a message when it cannot be used.
    explicit MachoFile(const char* path);

    bool isProgram() const { return m_isProgram; }
    std::uint64_t entryOffset() const { return m_entryOffset; } ///< from the text segment
    const std::vector<Segment>& segments() const { return m_segments; }
    const std::vector<Section>& sections() const { return m_sections; }
    const std::vector<Symbol>& symbols() const { return m_symbols; } ///< defined and visible outside
    Bytes bytes(std::uint64_t offset, std::uint64_t size) const { return m_bytes.subspan(offset, size); }

    Bytes rebaseCommands() const { return m_rebase; }
    /// Bound when loaded, weak ones, and bound when first called.
    Bytes bindCommands() const { return m_bind; }
    Bytes weakBindCommands() const { return m_weakBind; }
    Bytes lazyBindCommands() const { return m_lazyBind; }

private:
    Bytes m_bytes;
    bool m_isProgram = false;
    std::uint64_t m_entryOffset = 0;
    std::vector<Segment> m_segments;
    std::vector<Section> m_sections;
    std::vector<Symbol> m_symbols;
    Bytes m_rebase, m_bind, m_weakBind, m_lazyBind;
};

/// Says what is wrong and ends the process with a status that no test program uses.
[[noreturn]] void refuse(const char* path, const std::string& reason);

/// Reads numbers from a sequence of bytes, from its beginning on.
class Reader {
public:
    explicit Reader(Bytes bytes) : m_at(bytes.data()), m_end(bytes.data() + bytes.size()) {}
    Reader(const std::uint8_t* begin, const std::uint8_t* end) : m_at(begin), m_end(end) {}

    bool atEnd() const { return m_at >= m_end; }
    const std::uint8_t* position() const { return m_at; }
    void moveTo(const std::uint8_t* position) { m_at = position; }

    template <class T>
    T take() {
        T value;
        __builtin_memcpy(&value, m_at, sizeof value);
        m_at += sizeof value;
        return value;
    }
    /// A number of variable length: seven bits a byte, the lowest first, in two's complement where it has a sign.
    template <std::integral T>
    T takeLeb128() {
        std::uint64_t value = 0;
        unsigned shift = 0;
        std::uint8_t byte;
        do {
            byte = take<std::uint8_t>();
            value |= std::uint64_t{byte & 0x7FU} << shift;
            shift += 7;
        } while ((byte & 0x80) != 0);
        if (std::is_signed_v<T> && shift < 64 && (byte & 0x40) != 0)
            value |= ~std::uint64_t{0} << shift;
        return static_cast<T>(value);
    }
    std::uint64_t takeUleb() { return takeLeb128<std::uint64_t>(); }
    std::int64_t takeSleb() { return takeLeb128<std::int64_t>(); }
    const char* takeText();

private:
    const std::uint8_t* m_at;
    const std::uint8_t* m_end;
};

template <class T>
T valueAt(const void* address) {
    T value;
    __builtin_memcpy(&value, address, sizeof value);
    return value;
}

} // namespace macho
