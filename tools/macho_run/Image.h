#pragma once

#include "MachoFile.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace macho {

/// What runs before main, with the arguments of main.
using Initialiser = void (*)(int argc, char** argv, char** environment, char** apple);

/// A Mach-O file in memory: mapped, moved, bound to the shims, its exceptions and thread-local variables usable. It
/// stays for the life of the process.
class Image {
public:
    /// Ends the process with a message when the file cannot be used.
    explicit Image(const char* path);

    /// The address of a symbol (with its underscore) that the file defines, null without one.
    void* find(std::string_view name) const;
    /// Runs the initialisers, as the loader does before main and in dlopen.
    void initialise() const;
    /// Runs main. Ends the process with a message for a library.
    int runProgram() const;

private:
    std::uint8_t* at(std::uint64_t address) const { return m_base + (address - m_lowest); }
    void map();
    void rebase() const;
    void bind(Bytes commands, bool isWeak, bool isLazy) const;
    void* resolve(std::string_view name, bool isWeak) const;
    void prepareSections();
    void protect() const;

    MachoFile m_file;
    const char* m_path;
    std::uint8_t* m_base = nullptr; ///< where the lowest segment lies
    std::uint64_t m_lowest = 0;     ///< the address that the file gives it
    std::uint64_t m_text = 0;       ///< the address that the file gives the text segment
    std::vector<Initialiser> m_initialisers;
};

/// The program's path and arguments, for shims that are asked for them.
struct ProgramArguments {
    const char* path;
    int count;
    char** values;
};
extern ProgramArguments g_arguments;

} // namespace macho
