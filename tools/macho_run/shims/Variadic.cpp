// On arm64 macOS passes all variable arguments on the stack, and a va_list is a pointer to them: functions that take
// either get it in the form of the system here. A long double is a double there.

#include "shims/Files.h"
#include "shims/Imports.h"
#include "shims/Locales.h"
#include "shims/Text.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace macho {

#if !defined(__aarch64__)

void addVariadicShims(ImportTable&) {}

#else

namespace {

// The system's va_list, over arguments that all lie on the stack.
class StackArguments {
public:
    explicit StackArguments(char* stack) {
        const struct {
            char* stack;
            void* general;
            void* floating;
            int generalOffset;
            int floatingOffset;
        } fields{stack, nullptr, nullptr, 0, 0};
        static_assert(sizeof fields == sizeof list);
        std::memcpy(&list, &fields, sizeof fields);
    }
    std::va_list list;
};

} // namespace

// A variadic function of the program's arrives at an entry in assembly, which passes the address of the stack arguments
// as the eighth argument on to a function of the same name with "Here".
#define MACHO_VARIADIC(name)                                                                                           \
    void name();                                                                                                       \
    __asm__(".text\n.globl " #name "\n" #name ":\n mov x7, sp\n b " #name "Here\n");

extern "C" {
int machoPrintfHere(const char* format, long, long, long, long, long, long, char* stack) {
    return std::vprintf(format, StackArguments(stack).list);
}
int machoWprintfHere(const wchar_t* format, long, long, long, long, long, long, char* stack) {
    return std::vwprintf(format, StackArguments(stack).list);
}
int machoFprintfHere(std::FILE* stream, const char* format, long, long, long, long, long, char* stack) {
    return std::vfprintf(stream, format, StackArguments(stack).list);
}
int machoSnprintfHere(char* out, std::size_t size, const char* format, long, long, long, long, char* stack) {
    return std::vsnprintf(out, size, format, StackArguments(stack).list);
}
int machoSscanfHere(const char* text, const char* format, long, long, long, long, long, char* stack) {
    return std::vsscanf(text, format, StackArguments(stack).list);
}
int machoSwprintfHere(wchar_t* out, std::size_t size, const wchar_t* format, long, long, long, long, char* stack) {
    return formatWide(out, size, format, StackArguments(stack).list);
}
int machoAsprintfInHere(char** out, locale_t locale, const char* format, long, long, long, long, char* stack) {
    const LocaleScope scope(locale);
    return ::vasprintf(out, format, StackArguments(stack).list);
}
int machoSnprintfInHere(char* out, std::size_t size, locale_t locale, const char* format, long, long, long,
                        char* stack) {
    const LocaleScope scope(locale);
    return std::vsnprintf(out, size, format, StackArguments(stack).list);
}
int machoSscanfInHere(const char* text, locale_t locale, const char* format, long, long, long, long, char* stack) {
    const LocaleScope scope(locale);
    return std::vsscanf(text, format, StackArguments(stack).list);
}
int machoOpenHere(const char* path, int flags, long, long, long, long, long, char* stack) {
    int mode;
    std::memcpy(&mode, stack, sizeof mode);
    return openFile(path, flags, mode);
}
int machoOpenAtHere(int folder, const char* path, int flags, long, long, long, long, char* stack) {
    int mode;
    std::memcpy(&mode, stack, sizeof mode);
    return openFileAt(folder, path, flags, mode);
}
int machoFcntlHere(int descriptor, int command, long, long, long, long, long, char* stack) {
    void* argument;
    std::memcpy(&argument, stack, sizeof argument);
    return controlFile(descriptor, command, argument);
}

MACHO_VARIADIC(machoPrintf)
MACHO_VARIADIC(machoWprintf)
MACHO_VARIADIC(machoFprintf)
MACHO_VARIADIC(machoSnprintf)
MACHO_VARIADIC(machoSscanf)
MACHO_VARIADIC(machoSwprintf)
MACHO_VARIADIC(machoAsprintfIn)
MACHO_VARIADIC(machoSnprintfIn)
MACHO_VARIADIC(machoSscanfIn)
MACHO_VARIADIC(machoOpen)
MACHO_VARIADIC(machoOpenAt)
MACHO_VARIADIC(machoFcntl)
}

namespace {

int formatToStream(std::FILE* stream, const char* format, char* stack) {
    return std::vfprintf(stream, format, StackArguments(stack).list);
}
int formatToOutput(const char* format, char* stack) {
    return std::vprintf(format, StackArguments(stack).list);
}
int formatWideToOutput(const wchar_t* format, char* stack) {
    return std::vwprintf(format, StackArguments(stack).list);
}
int formatTo(char* out, std::size_t size, const char* format, char* stack) {
    return std::vsnprintf(out, size, format, StackArguments(stack).list);
}
int formatWideTo(wchar_t* out, std::size_t size, const wchar_t* format, char* stack) {
    return formatWide(out, size, format, StackArguments(stack).list);
}
double numberIn(const char* text, char** end, locale_t locale) {
    return ::strtod_l(text, end, localeFromProgram(locale));
}

} // namespace

void addVariadicShims(ImportTable& table) {
    table.add("_printf", machoPrintf);
    table.add("_wprintf", machoWprintf);
    table.add("_fprintf", machoFprintf);
    table.add("_snprintf", machoSnprintf);
    table.add("_sscanf", machoSscanf);
    table.add("_swprintf", machoSwprintf);
    table.add("_asprintf_l", machoAsprintfIn);
    table.add("_snprintf_l", machoSnprintfIn);
    table.add("_sscanf_l", machoSscanfIn);
    table.add("_open", machoOpen);
    table.add("_openat", machoOpenAt);
    table.add("_fcntl", machoFcntl);
    table.add("_vfprintf", formatToStream);
    table.add("_vprintf", formatToOutput);
    table.add("_vwprintf", formatWideToOutput);
    table.add("_vsnprintf", formatTo);
    table.add("_vswprintf", formatWideTo);
    table.add("_strtold", static_cast<double (*)(const char*, char**)>(std::strtod));
    table.add("_strtold_l", numberIn);
    table.add("_wcstold", static_cast<double (*)(const wchar_t*, wchar_t**)>(std::wcstod));
    table.add("_nanl", static_cast<double (*)(const char*)>(std::nan));
    table.add("_nextafterl", static_cast<double (*)(double, double)>(::nextafter));
    table.add("_powl", static_cast<double (*)(double, double)>(::pow));
    table.add("_fmodl", static_cast<double (*)(double, double)>(::fmod));
    table.add("_floorl", static_cast<double (*)(double)>(::floor));
    table.add("_roundl", static_cast<double (*)(double)>(::round));
}

#endif

} // namespace macho
