// Threads: objects that macOS initialises by a constant tell their kind by a signature in their first word; the object
// of the system here is made in their place at the first use. None of ours is larger.

#include "shims/ErrorNumbers.h"
#include "shims/Imports.h"

#include <cstdint>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

namespace macho {

namespace {

constexpr long kPlainMutex = 0x32AAABA7;
constexpr long kErrorCheckMutex = 0x32AAABA1;
constexpr long kRecursiveMutex = 0x32AAABA2;
constexpr long kCondition = 0x3CB0B1BB;

static_assert(sizeof(pthread_mutex_t) <= 64 && sizeof(pthread_cond_t) <= 48, "fit into macOS's");

std::mutex g_makingObjects;

bool isUnmade(long signature) {
    return signature == kPlainMutex || signature == kErrorCheckMutex || signature == kRecursiveMutex;
}

pthread_mutex_t* mutexAt(long* place) {
    auto* const mutex = reinterpret_cast<pthread_mutex_t*>(place);
    const long signature = __atomic_load_n(place, __ATOMIC_ACQUIRE);
    if (!isUnmade(signature))
        return mutex;
    const std::lock_guard<std::mutex> guard(g_makingObjects);
    if (*place == signature) {
        pthread_mutexattr_t attributes;
        ::pthread_mutexattr_init(&attributes);
        if (signature == kRecursiveMutex)
            ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
        ::pthread_mutex_init(mutex, &attributes);
    }
    return mutex;
}

pthread_cond_t* conditionAt(long* place) {
    const std::lock_guard<std::mutex> guard(g_makingObjects);
    auto* const condition = reinterpret_cast<pthread_cond_t*>(place);
    if (*place == kCondition)
        ::pthread_cond_init(condition, nullptr);
    return condition;
}

int lock(long* mutex) {
    return errorForProgram(::pthread_mutex_lock(mutexAt(mutex)));
}
int tryLock(long* mutex) {
    return errorForProgram(::pthread_mutex_trylock(mutexAt(mutex)));
}
int unlock(long* mutex) {
    return errorForProgram(::pthread_mutex_unlock(mutexAt(mutex)));
}
int makeMutex(long* mutex, const pthread_mutexattr_t* attributes) {
    return ::pthread_mutex_init(reinterpret_cast<pthread_mutex_t*>(mutex), attributes);
}
int dropMutex(long* mutex) {
    return ::pthread_mutex_destroy(mutexAt(mutex));
}
int setMutexType(pthread_mutexattr_t* attributes, int type) {
    constexpr int kErrorCheck = 1, kRecursive = 2;
    return ::pthread_mutexattr_settype(attributes, type == kRecursive    ? PTHREAD_MUTEX_RECURSIVE
                                                   : type == kErrorCheck ? PTHREAD_MUTEX_ERRORCHECK
                                                                         : PTHREAD_MUTEX_NORMAL);
}

int wait(long* condition, long* mutex) {
    return ::pthread_cond_wait(conditionAt(condition), mutexAt(mutex));
}
int waitUntil(long* condition, long* mutex, const timespec* time) {
    return errorForProgram(::pthread_cond_timedwait(conditionAt(condition), mutexAt(mutex), time));
}
int signalOne(long* condition) {
    return ::pthread_cond_signal(conditionAt(condition));
}
int signalAll(long* condition) {
    return ::pthread_cond_broadcast(conditionAt(condition));
}
int dropCondition(long* condition) {
    return ::pthread_cond_destroy(conditionAt(condition));
}

// The second word of the object says whether it ran; the function may itself call this with another object.
int runOnce(long* once, void (*function)()) {
    static std::recursive_mutex guard;
    const std::lock_guard<std::recursive_mutex> held(guard);
    if (once[1] == 0) {
        once[1] = 1;
        function();
    }
    return 0;
}

int makeKey(unsigned long* key, void (*destroy)(void*)) {
    pthread_key_t made;
    const int result = ::pthread_key_create(&made, destroy);
    *key = made;
    return result;
}

std::uint32_t threadPort(pthread_t) {
    return static_cast<std::uint32_t>(::gettid());
}
int threadNumber(pthread_t, std::uint64_t* number) {
    *number = static_cast<std::uint64_t>(::gettid());
    return 0;
}

} // namespace

void addThreadShims(ImportTable& table) {
    table.add("_pthread_mutex_lock", lock);
    table.add("_pthread_mutex_trylock", tryLock);
    table.add("_pthread_mutex_unlock", unlock);
    table.add("_pthread_mutex_init", makeMutex);
    table.add("_pthread_mutex_destroy", dropMutex);
    table.add("_pthread_mutexattr_settype", setMutexType);
    table.add("_pthread_cond_wait", wait);
    table.add("_pthread_cond_timedwait", waitUntil);
    table.add("_pthread_cond_signal", signalOne);
    table.add("_pthread_cond_broadcast", signalAll);
    table.add("_pthread_cond_destroy", dropCondition);
    table.add("_pthread_once", runOnce);
    table.add("_pthread_key_create", makeKey);
    table.add("_pthread_atfork", ::pthread_atfork);
    table.add("_pthread_mach_thread_np", threadPort);
    table.add("_pthread_threadid_np", threadNumber);
}

} // namespace macho
