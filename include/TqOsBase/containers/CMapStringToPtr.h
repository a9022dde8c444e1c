#pragma once

/// \file
/// A hash map from wide strings to pointers.

#include <TqOsBase/Export.h>
#include <TqOsBase/containers/CPlex.h>
#include <TqOsBase/containers/CStdStr.h>

#include <stdexcept>

/// Position in a string list or map: an opaque pointer, null meaning none.
struct __POSITION;

/// Chained hash table from wide strings to pointers. Entries are cut from blocks of a fixed number of entries and
/// recycled through a free list; bucket array and blocks are given back the moment the map becomes empty.
///
/// With E entries chained, F entries on the free list and B blocks it holds between any two calls:
///   E = GetCount(),  E + F = B * block size,  E = 0  =>  B = 0,  E > 0  =>  there is a bucket array
///
/// The hash of a key is h = h * 33 + c over its characters, from 0, in 32 bits; its bucket that modulo the bucket
/// count, which never changes by itself. A chain begins with the entry inserted last. Keys are compared exactly; null
/// is the empty key. Keys have at most 511 characters: inserting a longer one throws std::length_error, looking one up
/// finds nothing. What allocates throws std::bad_alloc. The map is unchanged by whatever throws. One thread at a time.
class TQ_API CMapStringToPtr {
public:
    static constexpr int kKeyCapacity = 512; ///< Characters that an entry holds, the terminator included.

    /// An entry. 2 KiB and more: the key lies in it.
    struct TQ_SHOWN CAssoc {
        CAssoc* pNext;             ///< The next entry of its bucket or of the free list.
        unsigned int nBucket;      ///< Index of its bucket, not the hash.
        wchar_t key[kKeyCapacity]; ///< Terminated.
        unsigned short nLength;    ///< Of the key.
        bool isPadded;             ///< False while what lies after the key's terminator still has to be zeroed.
        void* value;               ///< The caller's.
    };

    /// An empty map of 17 buckets, none of them allocated, that allocates `nBlockSize` entries at a time. Throws
    /// std::invalid_argument below 1.
    explicit constexpr CMapStringToPtr(long long nBlockSize)
        : m_pHashTable(nullptr), m_nHashTableSize(kInitialBuckets), m_nCount(0), m_pFreeList(nullptr),
          m_pBlocks(nullptr), m_nBlockSize(nBlockSize) {
        if (nBlockSize < 1)
            throw std::invalid_argument("CMapStringToPtr: block size below 1");
    }
    CMapStringToPtr(const CMapStringToPtr&) = delete;
    CMapStringToPtr& operator=(const CMapStringToPtr&) = delete;
    ~CMapStringToPtr();

    /// The number of entries.
    long long GetCount() const noexcept { return m_nCount; }
    /// As GetCount.
    long long GetSize() const noexcept { return m_nCount; }
    /// GetCount() is 0.
    bool IsEmpty() const noexcept { return m_nCount == 0; }

    /// The number of buckets, allocated or not.
    unsigned int GetHashTableSize() const noexcept { return m_nHashTableSize; }
    /// Sets the bucket count for the array allocated now or by the next insertion. Entries are removed first. Throws
    /// std::invalid_argument for 0.
    void InitHashTable(unsigned int count, bool allocNow = true);

    /// False, and `value` unchanged, when the key is absent.
    bool Lookup(const wchar_t* key, void*& value) const;
    /// As Lookup, with the stored key, which stays where it is until the entry is removed. Zeros fill its array.
    bool LookupKey(const wchar_t* key, const wchar_t*& stored) const;
    /// The entry of a key, null when there is none. `bucket` receives the index of the key's bucket either way; `hash`
    /// is deliberately left alone.
    CAssoc* GetAssocAt(const wchar_t* key, unsigned int& bucket, unsigned int& hash) const;

    /// The value of a key, which is entered with a null value when it is absent. The reference lives as long as the
    /// entry.
    void*& operator[](const wchar_t* key);
    /// Enters the key, or replaces its value.
    void SetAt(const wchar_t* key, void* value) { (*this)[key] = value; }

    /// False when the key is absent.
    bool RemoveKey(const wchar_t* key);
    /// Gives everything back; positions and stored keys end here.
    void RemoveAll() noexcept;

    /// Where to begin an iteration: a special position, all bits set, or null when the map is empty.
    __POSITION* GetStartPosition() const noexcept;
    /// Gives key and value of the entry at `pos` and moves `pos` to the next one, null after the last: bucket by
    /// bucket, each chain from the entry inserted last. Throws std::out_of_range when there is none at `pos`. The entry
    /// just given may be removed, the others not, while the iteration goes on.
    void GetNextAssoc(__POSITION*& pos, CStdStr<wchar_t>& key, void*& value) const;

protected:
    /// Takes an entry off the free list, after allocating a block for an empty one; its contents are undefined.
    CAssoc* NewAssoc();
    /// Puts an entry that is in no chain back on the free list; the last one gives everything back.
    void FreeAssoc(CAssoc* assoc) noexcept;

private:
    struct Key;

    static constexpr unsigned int kInitialBuckets = 17;

    CAssoc* find(const Key& key) const;
    CAssoc* firstFrom(unsigned int bucket) const noexcept;

    CAssoc** m_pHashTable; // their marks after them
    unsigned int m_nHashTableSize;
    long long m_nCount;
    CAssoc* m_pFreeList; // linked through pNext
    CPlex* m_pBlocks;
    long long m_nBlockSize;
};
