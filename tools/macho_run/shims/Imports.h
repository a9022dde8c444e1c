#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace macho {

/// What macOS's names mean here: functions and objects by the name that programs import, with its underscore.
class ImportTable {
public:
    template <class Function>
    void add(const char* name, Function* function) {
        m_addresses[name] = reinterpret_cast<void*>(function);
    }
    /// A name that the loader of macOS gives a meaning, and that nothing reads here.
    void addUnused(const char* name) { m_addresses[name] = nullptr; }

    std::optional<void*> find(std::string_view name) const;

private:
    std::map<std::string, void*, std::less<>> m_addresses;
};

/// @{
/// One group of shims each.
void addFileShims(ImportTable& table);
void addLocaleShims(ImportTable& table);
void addMemoryShims(ImportTable& table);
void addProcessShims(ImportTable& table);
void addSameNames(ImportTable& table);
void addTextShims(ImportTable& table);
void addThreadShims(ImportTable& table);
/// Where variable arguments are passed otherwise than here (arm64): functions that take them or a va_list. Replaces
/// what other groups have added.
void addVariadicShims(ImportTable& table);
/// @}

/// The address of a known name, also a null one; nothing for one that is not known.
std::optional<void*> findImport(std::string_view name);

/// A function that says that `name` is not known here and ends the process: a program that never calls it can run.
void* missingImport(std::string_view name);

/// Ends the program as its own exit() does.
[[noreturn]] void exitProgram(int status);

} // namespace macho
