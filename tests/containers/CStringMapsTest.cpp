#include "reference/CountingNew.h"

#include <TqOsBase/containers/CMapStringToPtr.h>
#include <TqOsBase/containers/CMapStringToString.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using counting_new::liveArrays;

// The order of iteration: buckets ascending, each from the entry inserted last.
using Chains = std::map<unsigned, std::vector<std::pair<std::wstring, void*>>>;

unsigned bucketByTheBook(const std::wstring& key, unsigned buckets) {
    std::uint32_t hash = 0;
    for (const wchar_t c : key)
        hash = hash * 33 + static_cast<std::uint32_t>(c);
    return hash % buckets;
}

void* number(std::size_t n) {
    return reinterpret_cast<void*>(n);
}

std::vector<std::pair<std::wstring, void*>> contents(const CMapStringToPtr& map) {
    std::vector<std::pair<std::wstring, void*>> result;
    CStdStr<wchar_t> key;
    void* value = nullptr;
    for (__POSITION* pos = map.GetStartPosition(); pos != nullptr;) {
        map.GetNextAssoc(pos, key, value);
        result.emplace_back(key, value);
    }
    EXPECT_EQ(map.GetCount(), static_cast<long long>(result.size()));
    EXPECT_EQ(map.GetSize(), map.GetCount());
    EXPECT_EQ(map.IsEmpty(), result.empty());
    return result;
}

TEST(CMapStringToPtr, BlocksAndBucketsComeWhenNeededAndGoTogether) {
    const int before = liveArrays();
    CMapStringToPtr map(2);
    EXPECT_EQ(map.GetHashTableSize(), 17U);
    void* value = number(7);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(liveArrays(), before);
        EXPECT_EQ(map.GetStartPosition(), nullptr);
        EXPECT_FALSE(map.Lookup(L"a", value));
        EXPECT_FALSE(map.RemoveKey(L"a"));
        EXPECT_EQ(value, number(7));
        EXPECT_EQ(map[L"a"], nullptr);
        map.SetAt(L"b", number(2));
        EXPECT_EQ(liveArrays(), before + 2);
        const wchar_t* stored = nullptr;
        const wchar_t* second = nullptr;
        ASSERT_TRUE(map.LookupKey(L"a", stored) && map.LookupKey(L"b", second));
        EXPECT_EQ(reinterpret_cast<const char*>(second) - reinterpret_cast<const char*>(stored),
                  static_cast<std::ptrdiff_t>(sizeof(CMapStringToPtr::CAssoc)));
        EXPECT_TRUE(map.RemoveKey(L"a"));
        map.SetAt(L"recycled", nullptr);
        const wchar_t* recycled = nullptr;
        ASSERT_TRUE(map.LookupKey(L"recycled", recycled));
        EXPECT_EQ(recycled, stored);
        EXPECT_EQ(liveArrays(), before + 2);
        map.SetAt(L"third", nullptr);
        EXPECT_EQ(liveArrays(), before + 3);
        for (const wchar_t* key : {L"b", L"recycled", L"third"})
            EXPECT_TRUE(map.RemoveKey(key));
    }
    map.InitHashTable(101, false);
    EXPECT_EQ(liveArrays(), before);
    EXPECT_EQ(map.GetHashTableSize(), 101U);
    map.InitHashTable(5);
    EXPECT_EQ(liveArrays(), before + 1);
    map.SetAt(L"a", nullptr);
    map.InitHashTable(6, false);
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_THROW(map.InitHashTable(0), std::invalid_argument);
    EXPECT_EQ(map.GetHashTableSize(), 6U);
    EXPECT_EQ(liveArrays(), before);
    EXPECT_THROW(CMapStringToPtr(0), std::invalid_argument);
}

TEST(CMapStringToPtr, KeysOfEveryLength) {
    constexpr std::size_t kLongest = CMapStringToPtr::kKeyCapacity - 1;
    CMapStringToPtr map(1);
    for (std::size_t length = 0; length <= kLongest; ++length) {
        const std::wstring key(length, L'\x4E00');
        // Each takes over the entry of a long key, which must not show through.
        map.SetAt(std::wstring(kLongest, L'x').c_str(), nullptr);
        EXPECT_TRUE(map.RemoveKey(std::wstring(kLongest, L'x').c_str()));
        map.SetAt(key.c_str(), number(length + 1));
        const wchar_t* stored = nullptr;
        ASSERT_TRUE(map.LookupKey(key.c_str(), stored));
        ASSERT_EQ(stored, key);
        ASSERT_TRUE(std::all_of(stored + length, stored + kLongest + 1, [](wchar_t c) { return c == 0; })) << length;
        unsigned bucket = 0;
        unsigned hash = 99;
        const CMapStringToPtr::CAssoc* assoc = map.GetAssocAt(key.c_str(), bucket, hash);
        ASSERT_NE(assoc, nullptr);
        EXPECT_EQ(bucket, bucketByTheBook(key, 17));
        EXPECT_EQ(assoc->nBucket, bucket);
        EXPECT_EQ(hash, 99U);
    }
    // A difference anywhere is one.
    void* value = nullptr;
    for (std::size_t length = 1; length <= 70; ++length) {
        EXPECT_TRUE(map.Lookup(std::wstring(length, L'\x4E00').c_str(), value));
        EXPECT_EQ(value, number(length + 1));
        for (std::size_t i = 0; i < length; ++i) {
            std::wstring key(length, L'\x4E00');
            // Two characters that leave the hash as it is, where there is room for them.
            key[i] = static_cast<wchar_t>(key[i] + 1);
            if (i + 1 < length)
                key[i + 1] = static_cast<wchar_t>(key[i + 1] - 33);
            EXPECT_FALSE(map.Lookup(key.c_str(), value)) << length << ' ' << i;
        }
    }
    EXPECT_TRUE(map.Lookup(nullptr, value));
    EXPECT_EQ(value, number(1));

    const auto before = contents(map);
    const std::wstring tooLong(kLongest + 1, L'\x4E00');
    EXPECT_THROW(map.SetAt(tooLong.c_str(), nullptr), std::length_error);
    EXPECT_FALSE(map.Lookup(tooLong.c_str(), value));
    EXPECT_FALSE(map.RemoveKey(tooLong.c_str()));
    unsigned bucket = 0;
    unsigned hash = 0;
    EXPECT_EQ(map.GetAssocAt(tooLong.c_str(), bucket, hash), nullptr);
    EXPECT_EQ(bucket, bucketByTheBook(tooLong, 17));
    EXPECT_EQ(contents(map), before);
}

TEST(CMapStringToPtr, PositionsEndAndMayBeRemovedBehind) {
    CMapStringToPtr map(4);
    for (std::size_t i = 0; i < 50; ++i)
        map.SetAt(std::to_wstring(i).c_str(), number(i));
    __POSITION* pos = map.GetStartPosition();
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(pos), -1);
    CStdStr<wchar_t> key;
    void* value = nullptr;
    int count = 0;
    for (; pos != nullptr; ++count) {
        map.GetNextAssoc(pos, key, value);
        EXPECT_TRUE(map.RemoveKey(key.c_str()));
    }
    EXPECT_EQ(count, 50);
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_THROW(map.GetNextAssoc(pos, key, value), std::out_of_range);
    pos = reinterpret_cast<__POSITION*>(std::intptr_t{-1});
    EXPECT_THROW(map.GetNextAssoc(pos, key, value), std::out_of_range);
}

TEST(CMapStringToPtr, BehavesLikeChainsUnderRandomOperations) {
    std::mt19937 random(17);
    const int before = liveArrays();
    {
        CMapStringToPtr map(5);
        Chains model;
        for (std::size_t step = 0; step < 20000; ++step) {
            const std::wstring key = std::to_wstring(random() % 60) + std::wstring(random() % 3, L'k');
            auto& chain = model[bucketByTheBook(key, map.GetHashTableSize())];
            const auto entry =
                std::find_if(chain.begin(), chain.end(), [&key](const auto& e) { return e.first == key; });
            const bool isThere = entry != chain.end();
            void* value = nullptr;
            switch (random() % 4) {
            case 0:
                map.SetAt(key.c_str(), number(step));
                if (isThere)
                    entry->second = number(step);
                else
                    chain.insert(chain.begin(), {key, number(step)});
                break;
            case 1:
                ASSERT_EQ(map.Lookup(key.c_str(), value), isThere);
                ASSERT_EQ(value, isThere ? entry->second : nullptr);
                break;
            case 2:
                ASSERT_EQ(map.RemoveKey(key.c_str()), isThere);
                if (isThere)
                    chain.erase(entry);
                break;
            default:
                if (random() % 200 == 0) {
                    map.InitHashTable(1 + static_cast<unsigned>(random() % 40), random() % 2 == 0);
                    model.clear();
                } else if (random() % 200 == 0) {
                    map.RemoveAll();
                    model.clear();
                }
            }
            if (step % 8 == 0) {
                std::vector<std::pair<std::wstring, void*>> expected;
                for (const auto& [bucket, entries] : model)
                    expected.insert(expected.end(), entries.begin(), entries.end());
                ASSERT_EQ(contents(map), expected) << "step " << step;
            }
        }
    }
    EXPECT_EQ(liveArrays(), before);
}

TEST(CMapStringToString, StoresNothing) {
    CMapStringToString map(10);
    CStdStr<wchar_t> value(L"untouched");
    const wchar_t* stored = nullptr;
    unsigned bucket = 7;
    unsigned hash = 7;
    __POSITION* pos = nullptr;
    map.InitHashTable(10);
    map.SetAt(L"key", L"value");
    map[L"key"] = L"value";
    EXPECT_EQ(map[L"key"], L"");
    EXPECT_FALSE(map.Lookup(L"key", value));
    EXPECT_FALSE(map.LookupKey(L"key", stored));
    EXPECT_EQ(map.PLookup(L"key"), nullptr);
    EXPECT_EQ(std::as_const(map).PLookup(L"key"), nullptr);
    EXPECT_EQ(map.GetCount() + map.GetSize() + map.GetHashTableSize() + map.HashKey(L"key"), 0);
    EXPECT_FALSE(map.IsEmpty());
    EXPECT_TRUE(map.RemoveKey(L"key"));
    EXPECT_EQ(map.GetStartPosition(), nullptr);
    map.GetNextAssoc(pos, value, value);
    EXPECT_EQ(map.PGetFirstAssoc(), nullptr);
    EXPECT_EQ(map.PGetNextAssoc(map.PGetFirstAssoc()), nullptr);
    EXPECT_EQ(map.NewAssoc(), nullptr);
    map.FreeAssoc(nullptr);
    EXPECT_EQ(map.GetAssocAt(L"key", bucket, hash), nullptr);
    map.RemoveAll();
    EXPECT_EQ(value, L"untouched");
    EXPECT_EQ(bucket + hash, 14U);
}

} // namespace
