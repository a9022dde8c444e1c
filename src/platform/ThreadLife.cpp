#include "platform/ThreadLife.h"

namespace tq::platform {

// The key's value, where a thread has one, is the address of what is to be called.
void ThreadEnds::watch(void (*ended)()) noexcept {
    m_ended = ended;
    m_hasKey = ::pthread_key_create(&m_key, [](void* value) { (*static_cast<void (**)()>(value))(); }) == 0;
}

void ThreadEnds::expect(bool isExpected) noexcept {
    if (m_hasKey)
        ::pthread_setspecific(m_key, isExpected ? &m_ended : nullptr);
}

void ThreadEnds::unwatch() noexcept {
    if (m_hasKey)
        ::pthread_key_delete(m_key);
    m_hasKey = false;
}

void watchForks(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept {
    ::pthread_atfork(before, inParent, inChild);
}

} // namespace tq::platform
