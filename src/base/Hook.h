#pragma once

namespace tq::detail {

/// The value of a public pointer that any thread may set: all that the thread that set it did before is seen.
template <class T>
T readHook(T const& hook) noexcept {
    return __atomic_load_n(&hook, __ATOMIC_ACQUIRE);
}

template <class T>
void setHook(T& hook, T value) noexcept {
    __atomic_store_n(&hook, value, __ATOMIC_RELEASE);
}

} // namespace tq::detail
