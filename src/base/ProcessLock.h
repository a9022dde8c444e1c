#pragma once

namespace tq::detail {

/// The library's one lock, held while the object lives: around the few lists that all threads share and that seldom
/// change. The thread that holds it may take it again. A fork() waits until nobody else holds it, so that the child
/// finds the lists whole.
class ProcessLock {
public:
    ProcessLock();
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;
    ~ProcessLock();
};

} // namespace tq::detail
