#include "shims/Imports.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

namespace macho {

namespace {

const ImportTable& imports() {
    static const ImportTable table = [] {
        ImportTable all;
        addSameNames(all);
        addFileShims(all);
        addLocaleShims(all);
        addMemoryShims(all);
        addProcessShims(all);
        addTextShims(all);
        addThreadShims(all);
        addVariadicShims(all);
        return all;
    }();
    return table;
}

[[noreturn]] void callOfMissing(const char* name) {
    std::fprintf(stderr, "macho_run: the program calls %s, which is not known here\n", name);
    std::_Exit(97);
}

// Code that calls callOfMissing with a name: both addresses stand behind it.
struct Trampoline {
#if defined(__aarch64__)
    std::uint32_t code[4] = {0x58000080, 0x580000B0, 0xD61F0200, 0xD503201F}; // ldr x0, ldr x16, br x16
#else
    std::uint8_t code[16] = {0x48, 0x8B, 0x3D, 0x09, 0, 0, 0, // mov rdi, [rip + 9]
                             0xFF, 0x25, 0x0B, 0,    0, 0,    // jmp [rip + 11]
                             0x90, 0x90, 0x90};
#endif
    const char* name;
    void (*target)(const char*);
};

} // namespace

std::optional<void*> ImportTable::find(std::string_view name) const {
    if (const auto found = m_addresses.find(name); found != m_addresses.end())
        return found->second;
    return std::nullopt;
}

std::optional<void*> findImport(std::string_view name) {
    return imports().find(name);
}

void* missingImport(std::string_view name) {
    constexpr std::size_t kRoom = 65536;
    static std::uint8_t* const room = static_cast<std::uint8_t*>(
        ::mmap(nullptr, kRoom, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    static std::size_t used = 0;
    static std::map<std::string, void*, std::less<>> known;
    if (const auto found = known.find(name); found != known.end())
        return found->second;
    if (room == MAP_FAILED || used + sizeof(Trampoline) > kRoom) {
        std::fprintf(stderr, "macho_run: too many names that are not known here, %.*s the next\n",
                     static_cast<int>(name.size()), name.data());
        std::_Exit(96);
    }
    Trampoline trampoline{};
    trampoline.name = ::strndup(name.data(), name.size());
    trampoline.target = callOfMissing;
    void* const place = room + used;
    std::memcpy(place, &trampoline, sizeof trampoline);
    __builtin___clear_cache(static_cast<char*>(place), static_cast<char*>(place) + sizeof trampoline);
    used += sizeof trampoline;
    known.emplace(name, place);
    return place;
}

} // namespace macho
