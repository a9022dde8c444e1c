#include "fltcvt/DigitAllocator.h"

#include "platform/StaticInit.h"

#include <cstddef>
#include <new>
#include <utility>

static_assert(offsetof(TqFCvtAllocator, m_cursor) == sizeof(TqLocker) + TqFCvtAllocator::kPoolBytes);
static_assert(offsetof(Bigint, words) == 24 && sizeof(Bigint) == tq::detail::blockBytes(0));
static_assert(tq::detail::kSmallStringRoom == sizeof(Bigint) - tq::detail::kStringOffset);

constinit TqFCvtAllocator __fcvtAlloc;
constinit Bigint* G_Pow5Data = nullptr;

namespace {

// Stays set after exit, so that nothing is built again.
constinit bool g_isBuilt = false;

constexpr int kCachedPowers = 7;

constinit tq::platform::ThreadEnds g_ownersEnd;
constinit std::atomic<bool> g_isOwned = false;
constinit std::atomic<Bigint*> g_left = nullptr; // what other threads have freed, linked
// A thread that has owned the blocks and is ending: no second end would be told.
constinit thread_local bool t_isOver = false;

void resign() {
    tq::detail::t_ownsDigitBlocks = false;
    g_isOwned.store(false, std::memory_order_release);
}

void resignAtThreadEnd() {
    t_isOver = true;
    resign();
}

// Makes the calling thread the owner, if there is none.
void claim() {
    if (t_isOver || g_isOwned.load(std::memory_order_relaxed) || g_isOwned.exchange(true, std::memory_order_acquire))
        return;
    tq::detail::t_ownsDigitBlocks = true;
    g_ownersEnd.expect(true);
}

void takeInLeft() {
    for (Bigint* block = g_left.exchange(nullptr, std::memory_order_acquire); block != nullptr;) {
        Bigint* const next = block->next;
        tq::detail::giveBlock(block, block->k);
        block = next;
    }
}

// Whatever converts first builds the allocator, whether or not the static initialiser has run by then.
void build() {
    if (g_isBuilt)
        return;
    g_isBuilt = true;
    g_ownersEnd.watch(resignAtThreadEnd);
    new (&__fcvtAlloc.m_locker) TqLocker;
    __fcvtAlloc.m_cursor = reinterpret_cast<unsigned char*>(__fcvtAlloc.m_pool);
    TqGdImpl::initPow5Data();
}

void tearDown() {
    g_ownersEnd.unwatch();
    claim();
    if (!tq::detail::t_ownsDigitBlocks)
        return; // another thread may be converting
    __fcvtAlloc.m_cursor = nullptr;
    G_Pow5Data = nullptr;
    delete std::exchange(__fcvtAlloc.m_locker.m_pLock, nullptr);
}

struct AllocatorLife {
    // The first thread to convert shall own the blocks, and not the one that happens to load the library.
    AllocatorLife() {
        build();
        if (tq::detail::t_ownsDigitBlocks) {
            g_ownersEnd.expect(false);
            resign();
        }
    }
    AllocatorLife(const AllocatorLife&) = delete;
    AllocatorLife& operator=(const AllocatorLife&) = delete;
    ~AllocatorLife() { tearDown(); }
};

TQ_INIT_FIRST AllocatorLife g_allocatorLife;

void* rawBlock(int k) {
    const std::uint64_t bytes = tq::detail::blockBytes(k);
    unsigned char* const cursor = tq::detail::t_ownsDigitBlocks ? __fcvtAlloc.m_cursor : nullptr;
    if (cursor != nullptr) {
        const auto used = static_cast<std::uint64_t>(cursor - reinterpret_cast<unsigned char*>(__fcvtAlloc.m_pool));
        if (used + bytes <= sizeof __fcvtAlloc.m_pool) {
            __fcvtAlloc.m_cursor = cursor + bytes;
            return cursor;
        }
    }
    return tqMalloc(bytes);
}

} // namespace

namespace tq::detail {

constinit thread_local bool t_ownsDigitBlocks TQ_NEAR_THREAD_LOCAL = false;

[[gnu::noinline]] void giveElsewhere(Bigint* block, std::int32_t k) noexcept {
    if (!isOfPool(block)) {
        tqFree(block);
        return;
    }
    // The owner takes the whole list at once, so that a block cannot come back to its head between the two steps here.
    block->k = k;
    Bigint* next = g_left.load(std::memory_order_relaxed);
    do
        block->next = next;
    while (!g_left.compare_exchange_weak(next, block, std::memory_order_release, std::memory_order_relaxed));
}

Bigint* freshBlock(int k) {
    // The largest class whose number of words an int can hold.
    constexpr int kLargestClass = 30;
    if (k < 0 || k > kLargestClass)
        throw std::bad_alloc();
    build();
    if (!t_ownsDigitBlocks)
        claim();
    if (t_ownsDigitBlocks && k < TqFCvtAllocator::kSizeClasses) {
        takeInLeft();
        if (blockAtHand(k) != nullptr)
            return takeBlock(k);
    }
    auto* const block = static_cast<Bigint*>(rawBlock(k));
    if (block == nullptr)
        throw std::bad_alloc();
    beginBlock(block, k);
    return block;
}

} // namespace tq::detail

TqFCvtAllocator* tqFCvtAllocator() {
    return &__fcvtAlloc;
}

Bigint* TqGdImpl::Balloc(int k) {
    return tq::detail::takeBlock(k);
}

void TqGdImpl::Bfree(Bigint* b) {
    if (b != nullptr)
        tq::detail::giveBlock(b, b->k);
}

void TqGdImpl::initPow5Data() {
    build();
    if (G_Pow5Data != nullptr || __fcvtAlloc.m_cursor == nullptr)
        return;
    Bigint* last = Balloc(1);
    last->words[0] = 625;
    last->used = 1;
    G_Pow5Data = last;
    for (int i = 1; i < kCachedPowers; ++i) {
        last->next = mult(last, last);
        last = last->next;
    }
    last->next = nullptr;
}

char* TqGdImpl::rv_alloc(int i) {
    int k = 0;
    for (std::int64_t room = 4; 24 + room <= i; room *= 2)
        ++k;
    return tq::detail::takeString(k);
}

char* TqGdImpl::nrv_alloc(char* s, char** rve, int n) {
    const auto length = static_cast<int>(std::strlen(s));
    char* const copy = rv_alloc(n < length ? length : n);
    char* const end = strcp(copy, s);
    if (rve != nullptr)
        *rve = end;
    return copy;
}

void TqGdImpl::freedtoa(char* s) {
    if (s != nullptr)
        tq::detail::giveString(s);
}

char* TqGdImpl::strcp(char* a, const char* b) {
    const std::size_t length = std::strlen(b);
    std::memcpy(a, b, length + 1);
    return a + length;
}
