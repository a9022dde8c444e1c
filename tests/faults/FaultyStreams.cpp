#include "faults/FailingCalls.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <map>
#include <sys/types.h>
#include <unistd.h>

using faults::Call;
using faults::Fault;

namespace {

struct Plan {
    Call call;
    Fault fault;
    int left;
    bool isMet;
};

Plan g_plan{};
bool g_isArmed = false;

// The streams made here and their descriptors.
std::map<std::FILE*, int>& descriptors() {
    static std::map<std::FILE*, int> map;
    return map;
}

// True when this call must go wrong.
bool isDue(Call call) {
    if (!g_isArmed || call != g_plan.call)
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
    if (isDue(Call::kRead)) {
        if (g_plan.fault != Fault::kShort)
            return failed();
        size = 1;
    }
    return ::read(fileOf(cookie), buffer, size);
}

ssize_t writeAll(int file, const char* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t n = ::write(file, buffer + done, size - done);
        if (n < 0)
            break;
        done += static_cast<std::size_t>(n);
    }
    return static_cast<ssize_t>(done);
}

// The C library takes less than all for an error here.
ssize_t writeTo(void* cookie, const char* buffer, std::size_t size) {
    const bool wasMet = g_plan.isMet;
    if (!isDue(Call::kWrite))
        return writeAll(fileOf(cookie), buffer, size);
    failed();
    if (g_plan.fault != Fault::kShort || wasMet)
        return 0;
    const ssize_t done = writeAll(fileOf(cookie), buffer, size / 2);
    errno = ENOSPC;
    return done;
}

int moveTo(void* cookie, off64_t* offset, int whence) {
    if (isDue(Call::kMove))
        return failed();
    const off64_t position = ::lseek(fileOf(cookie), *offset, whence);
    if (position < 0)
        return -1;
    *offset = position;
    return 0;
}

int closeFile(void* cookie) {
    const int result = ::close(fileOf(cookie));
    return isDue(Call::kClose) ? failed() : result;
}

} // namespace

faults::FaultyStreams::FaultyStreams(Call call, Fault fault, int nth) {
    g_plan = {call, fault, nth, false};
    g_isArmed = true;
}

faults::FaultyStreams::~FaultyStreams() {
    g_isArmed = false;
}

bool faults::FaultyStreams::wasMet() const {
    return g_plan.isMet;
}

// The names are the linker's.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

std::FILE* __real_fdopen(int file, const char* mode);
int __real_fileno(std::FILE* stream);

std::FILE* __wrap_fdopen(int file, const char* mode) {
    if (!g_isArmed)
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
