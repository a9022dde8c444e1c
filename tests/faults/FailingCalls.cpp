#include "faults/FailingCalls.h"

#include "reference/CountingNew.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <map>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

using faults::Call;
using faults::Fault;

namespace {

struct {
    Call call;
    Fault fault;
    int left;
    bool isMet, isArmed;
} g_plan;

// The streams made here and their descriptors.
std::map<std::FILE*, int>& descriptors() {
    static std::map<std::FILE*, int> map;
    return map;
}

bool isDue(Call call) {
    if (!g_plan.isArmed || call != g_plan.call)
        return false;
    if (g_plan.isMet)
        return g_plan.fault == Fault::kBroken || (g_plan.fault == Fault::kShort && call == Call::kWrite);
    g_plan.isMet = g_plan.left-- == 0;
    return g_plan.isMet;
}

int fileOf(void* cookie) {
    return static_cast<int>(reinterpret_cast<std::ptrdiff_t>(cookie));
}

int failed() {
    errno = g_plan.fault == Fault::kInterrupted ? EINTR : g_plan.fault == Fault::kShort ? ENOSPC : EIO;
    return -1;
}

ssize_t readFrom(void* cookie, char* buffer, std::size_t size) {
    const bool fails = isDue(Call::kRead);
    if (fails && g_plan.fault != Fault::kShort)
        return failed();
    return ::read(fileOf(cookie), buffer, fails ? 1 : size);
}

// The C library takes less than all for an error here.
ssize_t writeTo(void* cookie, const char* buffer, std::size_t size) {
    const bool isLater = g_plan.isMet;
    const bool fails = isDue(Call::kWrite);
    if (fails)
        size = g_plan.fault == Fault::kShort && !isLater ? size / 2 : 0;
    const ssize_t done = ::write(fileOf(cookie), buffer, size); // a file takes all at once
    if (fails)
        failed();
    return done;
}

int moveTo(void* cookie, off_t* offset, int whence) {
    const off_t position = isDue(Call::kMove) ? failed() : ::lseek(fileOf(cookie), *offset, whence);
    if (position >= 0)
        *offset = position;
    return position < 0 ? -1 : 0;
}

int closeFile(void* cookie) {
    const int result = ::close(fileOf(cookie));
    return isDue(Call::kClose) ? failed() : result;
}

void* counted(void* block) {
    if (block != nullptr)
        counting_new::count(1);
    return block;
}

} // namespace

faults::FaultyStreams::FaultyStreams(Call call, Fault fault, int nth) {
    g_plan = {call, fault, nth, false, true};
}

faults::FaultyStreams::~FaultyStreams() {
    g_plan.isArmed = false;
}

bool faults::FaultyStreams::wasMet() const {
    return g_plan.isMet;
}

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

void* __real_tqMalloc(std::size_t size);
void* __real_tqAllocate(std::size_t size);
void* __real_tqRealloc(void* block, std::size_t size);
void __real_tqFree(void* block);
void* __real_malloc(std::size_t size);
int __real_mprotect(void* address, std::size_t size, int rights);
void* __real_mmap(void* address, std::size_t size, int rights, int flags, int file, off_t offset);
std::FILE* __real_fdopen(int file, const char* mode);
int __real_fileno(std::FILE* stream);

void* __wrap_tqMalloc(std::size_t size) {
    return counting_new::mustFail() ? nullptr : counted(__real_tqMalloc(size));
}

void* __wrap_tqAllocate(std::size_t size) {
    return counting_new::mustFail() ? nullptr : counted(__real_tqAllocate(size));
}

void* __wrap_tqRealloc(void* block, std::size_t size) {
    if (counting_new::mustFail())
        return nullptr;
    void* const moved = __real_tqRealloc(block, size);
    return block == nullptr ? counted(moved) : moved;
}

void __wrap_tqFree(void* block) {
    if (block != nullptr)
        counting_new::count(-1);
    __real_tqFree(block);
}

void* __wrap_malloc(std::size_t size) {
    return faults::g_failsMalloc ? nullptr : __real_malloc(size);
}

void* __wrap_mmap(void* address, std::size_t size, int rights, int flags, int file, off_t offset) {
    return faults::g_failsMapping ? MAP_FAILED : __real_mmap(address, size, rights, flags, file, offset);
}

int __wrap_mprotect(void* address, std::size_t size, int rights) {
    errno = ENOMEM;
    return faults::g_failsProtection ? -1 : __real_mprotect(address, size, rights);
}

std::FILE* __wrap_fdopen(int file, const char* mode) {
    if (!g_plan.isArmed)
        return __real_fdopen(file, mode);
    std::FILE* stream = ::fopencookie(reinterpret_cast<void*>(static_cast<std::ptrdiff_t>(file)), mode,
                                      {readFrom, writeTo, moveTo, closeFile});
    descriptors()[stream] = file;
    return stream;
}

int __wrap_fileno(std::FILE* stream) {
    const int file = __real_fileno(stream);
    const auto found = descriptors().find(stream);
    return file >= 0 || found == descriptors().end() ? file : found->second;
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
