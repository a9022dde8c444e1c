#include "platform/ThreadLife.h"

#include <pthread.h>

namespace tq::platform {

namespace {

pthread_key_t g_key;
bool g_hasKey = false;
void (*g_ended)() = nullptr;

} // namespace

bool watchThreadEnds(void (*ended)()) noexcept {
    g_ended = ended;
    g_hasKey = ::pthread_key_create(&g_key, [](void*) { g_ended(); }) == 0;
    return g_hasKey;
}

void expectThreadEnd(bool isExpected) noexcept {
    if (g_hasKey)
        ::pthread_setspecific(g_key, isExpected ? &g_key : nullptr);
}

void unwatchThreadEnds() noexcept {
    if (g_hasKey)
        ::pthread_key_delete(g_key);
    g_hasKey = false;
}

void watchForks(void (*inChild)()) noexcept {
    ::pthread_atfork(nullptr, nullptr, inChild);
}

} // namespace tq::platform
