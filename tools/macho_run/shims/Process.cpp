// Errors, limits, time, processes, loading of libraries and what a program asks about itself.

#include "Image.h"
#include "shims/ErrorNumbers.h"
#include "shims/Imports.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace macho {

namespace {

constexpr std::pair<int, int> kErrorNumbers[] = {
    {EAGAIN, 35}, {EDEADLK, 11},   {ENAMETOOLONG, 63}, {ENOSYS, 78},    {ENOTEMPTY, 66},   {ELOOP, 62},
    {EILSEQ, 92}, {EOVERFLOW, 84}, {ENOTSUP, 45},      {ETIMEDOUT, 60}, {EINPROGRESS, 36}, {EALREADY, 37},
};

// What the C library here left in errno since the last look becomes the program's number.
int* errorAddress() {
    thread_local int programs = 0;
    if (errno != 0)
        programs = errorForProgram(std::exchange(errno, 0));
    return &programs;
}

int textOfError(int number, char* buffer, std::size_t size) {
    const char* const text = ::strerrordesc_np(errorFromProgram(number));
    if (text == nullptr) {
        std::snprintf(buffer, size, "Unknown error: %d", number);
        return EINVAL;
    }
    std::snprintf(buffer, size, "%s", text);
    return 0;
}

char* errorText(int number) {
    thread_local char buffer[128];
    textOfError(number, buffer, sizeof buffer);
    return buffer;
}

constexpr int kBusErrorThere = 10;

int signalFromProgram(int number) {
    return number == kBusErrorThere ? SIGBUS : number;
}

auto setSignal(int number, void (*handler)(int)) {
    return std::signal(signalFromProgram(number), handler);
}

int waitForProcess(int process, int* status, int options) {
    const int result = ::waitpid(process, status, options);
    if (result > 0 && status != nullptr && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGBUS)
        *status = (*status & ~0x7F) | kBusErrorThere;
    return result;
}

// A program for macOS is run as this one is.
int execute(const char* path, char* const* arguments) {
    constexpr std::uint32_t kMagic = 0xFEEDFACF;
    std::uint32_t magic = 0;
    if (std::FILE* file = std::fopen(path, "rb")) {
        if (std::fread(&magic, sizeof magic, 1, file) != 1)
            magic = 0;
        std::fclose(file);
    }
    if (magic != kMagic)
        return ::execv(path, arguments);
    std::vector<char*> all{const_cast<char*>("macho_run"), const_cast<char*>(path)};
    for (char* const* argument = arguments + 1; *argument != nullptr; ++argument)
        all.push_back(*argument);
    all.push_back(nullptr);
    return ::execv("/proc/self/exe", all.data());
}

enum class Limits { kAddressSpace = 5, kProcesses = 7, kOpenFiles = 8 };

auto limitFromProgram(int number) {
    switch (static_cast<Limits>(number)) {
    case Limits::kAddressSpace:
        return RLIMIT_AS;
    case Limits::kProcesses:
        return RLIMIT_NPROC;
    case Limits::kOpenFiles:
        return RLIMIT_NOFILE;
    default:
        return static_cast<__rlimit_resource>(number);
    }
}

int getLimit(int number, rlimit* limit) {
    return ::getrlimit(limitFromProgram(number), limit);
}

int setLimit(int number, const rlimit* limit) {
    return ::setrlimit(limitFromProgram(number), limit);
}

int clockTime(int clock, timespec* time) {
    constexpr int kRealTime = 0, kProcessTime = 12, kThreadTime = 16;
    switch (clock) {
    case kRealTime:
        return ::clock_gettime(CLOCK_REALTIME, time);
    case kProcessTime:
        return ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, time);
    case kThreadTime:
        return ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, time);
    default:
        return ::clock_gettime(CLOCK_MONOTONIC, time);
    }
}

std::uint64_t ticks() {
    timespec time;
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1000000000U + static_cast<std::uint64_t>(time.tv_nsec);
}

int ticksPerNanosecond(std::uint32_t* fraction) {
    fraction[0] = fraction[1] = 1;
    return 0;
}

// The settings of floating point: what a program saves has another size there. Nobody asks for the marks of errors.
struct FloatSettings {
    std::uint64_t words[2];
};

int saveFloatSettings(FloatSettings* settings) {
#if defined(__aarch64__)
    __asm__ volatile("mrs %0, fpsr" : "=r"(settings->words[0]));
    __asm__ volatile("mrs %0, fpcr" : "=r"(settings->words[1]));
#else
    std::uint16_t control = 0;
    std::uint32_t vectorControl = 0;
    __asm__ volatile("fnstcw %0" : "=m"(control));
    __asm__ volatile("stmxcsr %0" : "=m"(vectorControl));
    *settings = {{control, vectorControl}};
#endif
    return 0;
}

int restoreFloatSettings(const FloatSettings* settings) {
#if defined(__aarch64__)
    __asm__ volatile("msr fpsr, %0" : : "r"(settings->words[0]));
    __asm__ volatile("msr fpcr, %0" : : "r"(settings->words[1]));
#else
    const auto control = static_cast<std::uint16_t>(settings->words[0]);
    const auto vectorControl = static_cast<std::uint32_t>(settings->words[1]);
    __asm__ volatile("fldcw %0" : : "m"(control));
    __asm__ volatile("ldmxcsr %0" : : "m"(vectorControl));
#endif
    return 0;
}

thread_local std::string t_loadError;
thread_local bool t_hasLoadError;

void* loadLibrary(const char* path, int) {
    if (path == nullptr || ::access(path, R_OK) != 0) {
        t_loadError = "no such image";
        t_hasLoadError = true;
        return nullptr;
    }
    auto* const image = new Image(path);
    image->initialise();
    return image;
}

void* findSymbol(void* library, const char* name) {
    const std::string full = std::string("_") + name;
    void* found = nullptr;
    if (reinterpret_cast<std::intptr_t>(library) > 0)
        found = static_cast<Image*>(library)->find(full);
    else if (const auto shim = findImport(full))
        found = *shim;
    t_hasLoadError = found == nullptr;
    if (t_hasLoadError)
        t_loadError = "symbol not found: " + full;
    return found;
}

const char* loadError() {
    return std::exchange(t_hasLoadError, false) ? t_loadError.c_str() : nullptr;
}

int unloadLibrary(void*) {
    return 0; // images stay
}

int* argumentCount() {
    return &g_arguments.count;
}

char*** arguments() {
    return &g_arguments.values;
}

int executablePath(char* buffer, std::uint32_t* size) {
    std::snprintf(buffer, *size, "%s", g_arguments.path);
    return 0;
}

[[noreturn]] void assertionFailed(const char* function, const char* file, int line, const char* what) {
    std::fprintf(stderr, "Assertion failed: (%s), function %s, file %s, line %d.\n", what, function, file, line);
    std::abort();
}

bool isSystemAtLeast(std::uint32_t, void*) {
    return true;
}

// What the thread is to do when it ends, the last first.
struct ThreadExit {
    void (*function)(void*);
    void* object;
    ThreadExit* before;
};

void runThreadExits(void* last) {
    for (auto* step = static_cast<ThreadExit*>(last); step != nullptr;) {
        step->function(step->object);
        delete std::exchange(step, step->before);
    }
}

::pthread_key_t threadExits() {
    static const ::pthread_key_t key = [] {
        ::pthread_key_t made{};
        ::pthread_key_create(&made, runThreadExits);
        return made;
    }();
    return key;
}

void atThreadExit(void (*function)(void*), void* object) {
    auto* const before = static_cast<ThreadExit*>(::pthread_getspecific(threadExits()));
    ::pthread_setspecific(threadExits(), new ThreadExit{function, object, before});
}

std::uint32_t g_ownTask = 1;

// The number of threads is all that the test framework asks.
int threadsOfTask(std::uint32_t, void** list, std::uint32_t* count) {
    *list = nullptr;
    *count = 0;
    if (DIR* const folder = ::opendir("/proc/self/task")) {
        while (const dirent* entry = ::readdir(folder))
            *count += entry->d_name[0] != '.' ? 1 : 0;
        ::closedir(folder);
    }
    return 0;
}

int releaseList(std::uint32_t, void*, std::size_t) {
    return 0;
}

} // namespace

int errorForProgram(int number) {
    for (const auto& [here, there] : kErrorNumbers) {
        if (here == number)
            return there;
    }
    return number;
}

int errorFromProgram(int number) {
    for (const auto& [here, there] : kErrorNumbers) {
        if (there == number)
            return here;
    }
    return number;
}

void addProcessShims(ImportTable& table) {
    table.add("___error", errorAddress);
    table.add("_strerror", errorText);
    table.add("_strerror_r", textOfError);
    table.add("_signal", setSignal);
    table.add("_waitpid", waitForProcess);
    table.add("_execv", execute);
    table.add("_getrlimit", getLimit);
    table.add("_setrlimit", setLimit);
    table.add("_clock_gettime", clockTime);
    table.add("_mach_absolute_time", ticks);
    table.add("_mach_timebase_info", ticksPerNanosecond);
    table.add("_fegetenv", saveFloatSettings);
    table.add("_fesetenv", restoreFloatSettings);
    table.add("_dlopen", loadLibrary);
    table.add("_dlsym", findSymbol);
    table.add("_dlerror", loadError);
    table.add("_dlclose", unloadLibrary);
    table.add("__NSGetArgc", argumentCount);
    table.add("__NSGetArgv", arguments);
    table.add("__NSGetExecutablePath", executablePath);
    table.add("___assert_rtn", assertionFailed);
    table.add("__availability_version_check", isSystemAtLeast);
    table.add("__tlv_atexit", atThreadExit);
    table.add("_exit", exitProgram);
    table.add("_mach_task_self_", &g_ownTask);
    table.add("_task_threads", threadsOfTask);
    table.add("_vm_deallocate", releaseList);
    table.addUnused("__tlv_bootstrap");
    table.addUnused("dyld_stub_binder");
    table.addUnused("__mh_execute_header");
    table.addUnused("___dso_handle");
}

// As there, the calling thread's own objects go before the static ones.
void exitProgram(int status) {
    while (void* const last = ::pthread_getspecific(threadExits())) {
        ::pthread_setspecific(threadExits(), nullptr);
        runThreadExits(last);
    }
    std::exit(status);
}

} // namespace macho
