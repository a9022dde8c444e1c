#include <TqOsBase/containers/CMapStringToPtr.h>

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>

namespace {

using Assoc = CMapStringToPtr::CAssoc;

static_assert(offsetof(Assoc, nBucket) == 8 && offsetof(Assoc, key) == 12 && offsetof(Assoc, value) == 2064,
              "what an entry holds besides lies in the gap between key and value");

constexpr std::uint32_t kFactor = 33;

// After the buckets, in the same block, lie their marks: of 16 bits the two of each key in the chain are set, and
// perhaps those of keys removed since the chain was last empty (a Bloom filter, B. H. Bloom, 1970). Look-ups of absent
// keys end there and touch no entry, but for three in a hundred where there are as many keys as buckets.
using Mark = std::uint16_t;

std::unique_ptr<Assoc* []> newTable(unsigned int count) {
    constexpr std::size_t kMarksPerSlot = sizeof(Assoc*) / sizeof(Mark);
    auto table = std::make_unique<Assoc*[]>(count + (count + kMarksPerSlot - 1) / kMarksPerSlot);
    std::uninitialized_value_construct_n(reinterpret_cast<Mark*>(table.get() + count), count);
    return table;
}

Mark& markOf(Assoc** table, unsigned int count, unsigned int bucket) noexcept {
    return reinterpret_cast<Mark*>(table + count)[bucket];
}

// By bits of the hash that its remainder does not show.
Mark bitsOf(std::uint32_t hash) noexcept {
    constexpr std::uint32_t kGoldenRatio = 0x9E3779B1;
    const std::uint32_t mixed = hash * kGoldenRatio;
    return static_cast<Mark>(1U << (mixed >> 28) | 1U << (mixed >> 24 & 15));
}

__POSITION* positionOf(Assoc* assoc) noexcept {
    return reinterpret_cast<__POSITION*>(assoc);
}

__POSITION* beforeFirst() noexcept {
    return reinterpret_cast<__POSITION*>(~std::uintptr_t{0});
}

template <std::size_t Count>
bool equal(const wchar_t* a, const wchar_t* b) noexcept {
    return std::memcmp(a, b, Count * sizeof(wchar_t)) == 0;
}

// `length` characters of each, without a loop for the usual lengths: overlapping pieces at both ends.
bool equal(const wchar_t* a, const wchar_t* b, std::size_t length) noexcept {
    for (; length > 16; a += 8, b += 8, length -= 8) {
        if (!equal<8>(a, b))
            return false;
    }
    if (length >= 8)
        return equal<8>(a, b) && equal<8>(a + length - 8, b + length - 8);
    if (length >= 4)
        return equal<4>(a, b) && equal<4>(a + length - 4, b + length - 4);
    return length == 0 || (a[0] == b[0] && a[length / 2] == b[length / 2] && a[length - 1] == b[length - 1]);
}

template <std::size_t Count>
void copy(wchar_t* to, const wchar_t* from) noexcept {
    std::memcpy(to, from, Count * sizeof(wchar_t));
}

// The same for copying.
void copy(wchar_t* to, const wchar_t* from, std::size_t length) noexcept {
    if (length >= 8) {
        for (std::size_t i = 0; i + 8 < length; i += 8)
            copy<8>(to + i, from + i);
        copy<8>(to + length - 8, from + length - 8);
    } else if (length >= 4) {
        copy<4>(to, from);
        copy<4>(to + length - 4, from + length - 4);
    } else if (length > 0) {
        to[0] = from[0];
        to[length / 2] = from[length / 2];
        to[length - 1] = from[length - 1];
    }
}

// The calls that assign makes take longer than copying a usual key does. Most of them can be spared in a string that
// holds another key already.
void copyKey(CStdStr<wchar_t>& key, const Assoc& assoc) {
    constexpr std::size_t kUsualLength = 32;
    const std::size_t length = assoc.nLength;
    if (key.empty() || length > kUsualLength) {
        key.assign(assoc.key, length);
    } else {
        key.resize(length);
        copy(key.data(), assoc.key, length);
    }
}

// What an iteration reads of an entry lies at its two ends.
void prefetch(const Assoc* assoc) noexcept {
    __builtin_prefetch(assoc);
    __builtin_prefetch(&assoc->value);
}

// Most of the cost of an insertion would be zeroing the 2 KiB of a key, so the array gets its zeros only when someone
// is about to see it.
Assoc* padded(Assoc* assoc) noexcept {
    if (assoc != nullptr && !assoc->isPadded) {
        std::fill(assoc->key + assoc->nLength, std::end(assoc->key), wchar_t{0});
        assoc->isPadded = true;
    }
    return assoc;
}

} // namespace

// A key on its way through the table. The parts of a look-up are inlined by force: handed over in memory, the key costs
// a look-up a quarter of its time.
struct CMapStringToPtr::Key {
    [[gnu::always_inline]] explicit Key(const wchar_t* key) noexcept : text(key != nullptr ? key : L"") {
        constexpr std::uint32_t kFactor2 = kFactor * kFactor;
        constexpr std::uint32_t kFactor3 = kFactor2 * kFactor;
        constexpr std::uint32_t kFactor4 = kFactor2 * kFactor2;
        const wchar_t* end = text;
        const auto code = [&end](int i) { return static_cast<std::uint32_t>(end[i]); };
        // Four characters a step: one multiplication instead of four waits for the step before.
        for (; end[0] != 0 && end[1] != 0 && end[2] != 0 && end[3] != 0; end += 4)
            hash = hash * kFactor4 + (code(0) * kFactor3 + code(1) * kFactor2 + code(2) * kFactor + code(3));
        for (; *end != 0; ++end)
            hash = hash * kFactor + code(0);
        length = static_cast<std::size_t>(end - text);
    }

    bool isKeyOf(const CAssoc& assoc) const noexcept {
        return assoc.nLength == length && equal(assoc.key, text, length);
    }

    const wchar_t* text;
    std::size_t length = 0;
    std::uint32_t hash = 0;
};

CMapStringToPtr::~CMapStringToPtr() {
    RemoveAll();
}

void CMapStringToPtr::RemoveAll() noexcept {
    delete[] m_pHashTable;
    m_pHashTable = nullptr;
    m_pFreeList = nullptr;
    m_nCount = 0;
    if (m_pBlocks != nullptr)
        m_pBlocks->FreeDataChain();
    m_pBlocks = nullptr;
}

void CMapStringToPtr::InitHashTable(unsigned int count, bool allocNow) {
    if (count == 0)
        throw std::invalid_argument("CMapStringToPtr: no buckets");
    auto fresh = allocNow ? newTable(count) : nullptr;
    RemoveAll();
    m_pHashTable = fresh.release();
    m_nHashTableSize = count;
}

[[gnu::always_inline]] inline CMapStringToPtr::CAssoc* CMapStringToPtr::find(const Key& key) const {
    if (m_pHashTable == nullptr)
        return nullptr;
    const unsigned int bucket = key.hash % m_nHashTableSize;
    const Mark bits = bitsOf(key.hash);
    if ((markOf(m_pHashTable, m_nHashTableSize, bucket) & bits) != bits)
        return nullptr;
    CAssoc* assoc = m_pHashTable[bucket];
    while (assoc != nullptr && !key.isKeyOf(*assoc))
        assoc = assoc->pNext;
    return assoc;
}

bool CMapStringToPtr::Lookup(const wchar_t* key, void*& value) const {
    const CAssoc* found = find(Key(key));
    if (found == nullptr)
        return false;
    value = found->value;
    return true;
}

bool CMapStringToPtr::LookupKey(const wchar_t* key, const wchar_t*& stored) const {
    const CAssoc* found = padded(find(Key(key)));
    if (found == nullptr)
        return false;
    stored = found->key;
    return true;
}

CMapStringToPtr::CAssoc* CMapStringToPtr::GetAssocAt(const wchar_t* key, unsigned int& bucket,
                                                     unsigned int& /*hash*/) const {
    const Key wanted(key);
    bucket = wanted.hash % m_nHashTableSize;
    return padded(find(wanted));
}

void*& CMapStringToPtr::operator[](const wchar_t* key) {
    const Key wanted(key);
    if (CAssoc* found = find(wanted))
        return found->value;
    if (wanted.length >= kKeyCapacity)
        throw std::length_error("CMapStringToPtr: key of 512 characters or more");
    auto table = m_pHashTable == nullptr ? newTable(m_nHashTableSize) : nullptr;
    CAssoc* fresh = NewAssoc();
    if (table != nullptr)
        m_pHashTable = table.release();
    std::memcpy(fresh->key, wanted.text, (wanted.length + 1) * sizeof(wchar_t));
    fresh->nLength = static_cast<unsigned short>(wanted.length);
    fresh->isPadded = false;
    fresh->value = nullptr;
    fresh->nBucket = wanted.hash % m_nHashTableSize;
    CAssoc*& head = m_pHashTable[fresh->nBucket];
    fresh->pNext = head;
    head = fresh;
    Mark& mark = markOf(m_pHashTable, m_nHashTableSize, fresh->nBucket);
    mark = static_cast<Mark>(mark | bitsOf(wanted.hash));
    return fresh->value;
}

bool CMapStringToPtr::RemoveKey(const wchar_t* key) {
    CAssoc* const found = find(Key(key));
    if (found == nullptr)
        return false;
    CAssoc** link = &m_pHashTable[found->nBucket];
    while (*link != found)
        link = &(*link)->pNext;
    *link = found->pNext;
    if (m_pHashTable[found->nBucket] == nullptr)
        markOf(m_pHashTable, m_nHashTableSize, found->nBucket) = 0;
    FreeAssoc(found);
    return true;
}

// Threads the entries of a new block onto the free list in address order.
CMapStringToPtr::CAssoc* CMapStringToPtr::NewAssoc() {
    if (m_pFreeList == nullptr) {
        CPlex* block = CPlex::Create(m_pBlocks, static_cast<std::size_t>(m_nBlockSize), sizeof(CAssoc));
        auto* entries = static_cast<CAssoc*>(block->data());
        for (long long i = m_nBlockSize - 1; i >= 0; --i) {
            entries[i].pNext = m_pFreeList;
            m_pFreeList = &entries[i];
        }
    }
    assert(m_pFreeList != nullptr);
    CAssoc* fresh = m_pFreeList;
    m_pFreeList = fresh->pNext;
    ++m_nCount;
    return fresh;
}

void CMapStringToPtr::FreeAssoc(CAssoc* assoc) noexcept {
    assert(m_nCount > 0);
    assoc->pNext = m_pFreeList;
    m_pFreeList = assoc;
    if (--m_nCount == 0)
        RemoveAll();
}

// Entries are cache misses, and fetching the next one comes too late: entries a few buckets on are fetched. In a long
// row of empty buckets that would take longer than it saves.
CMapStringToPtr::CAssoc* CMapStringToPtr::firstFrom(unsigned int bucket) const noexcept {
    constexpr unsigned int kAhead = 8;
    constexpr unsigned int kLongRow = 4;
    const unsigned int size = m_nHashTableSize;
    for (unsigned int i = 0; i < kLongRow && bucket < size; ++i, ++bucket) {
        if (size - bucket > kAhead && m_pHashTable[bucket + kAhead] != nullptr)
            prefetch(m_pHashTable[bucket + kAhead]);
        if (m_pHashTable[bucket] != nullptr)
            return m_pHashTable[bucket];
    }
    for (; bucket < size; ++bucket) {
        if (m_pHashTable[bucket] != nullptr)
            return m_pHashTable[bucket];
    }
    return nullptr;
}

__POSITION* CMapStringToPtr::GetStartPosition() const noexcept {
    return IsEmpty() ? nullptr : beforeFirst();
}

void CMapStringToPtr::GetNextAssoc(__POSITION*& pos, CStdStr<wchar_t>& key, void*& value) const {
    if (pos == nullptr || IsEmpty())
        throw std::out_of_range("CMapStringToPtr: no such entry");
    const CAssoc* here = pos == beforeFirst() ? firstFrom(0) : reinterpret_cast<const CAssoc*>(pos);
    CAssoc* next = here->pNext;
    if (next != nullptr)
        prefetch(next);
    else
        next = firstFrom(here->nBucket + 1);
    copyKey(key, *here);
    value = here->value;
    pos = positionOf(next);
}
