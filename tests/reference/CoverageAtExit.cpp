// Linked into every test program of a build that counts which lines run: a process that aborts or leaves by _exit, as
// the children of tests do, writes its counts down first.

#include <csignal>
#include <cstdlib>

// The names are the compiler's and the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

void __gcov_dump();
[[noreturn]] void __real__exit(int status);
[[noreturn]] void __real__Exit(int status);

[[noreturn]] void __wrap__exit(int status) {
    __gcov_dump();
    __real__exit(status);
}

[[noreturn]] void __wrap__Exit(int status) {
    __gcov_dump();
    __real__Exit(status);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace {

[[maybe_unused]] const bool g_isInstalled = [] {
    std::signal(SIGABRT, [](int) {
        __gcov_dump();
        std::signal(SIGABRT, SIG_DFL);
        std::raise(SIGABRT);
    });
    return true;
}();

} // namespace
