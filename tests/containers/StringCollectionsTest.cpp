// What the random operations on arrays, lists and maps do not show: where storage comes and goes, and refusals.
#include "reference/ModelPlay.h"

#include <TqOsBase/containers/CMapStringToPtr.h>
#include <TqOsBase/containers/CMapStringToString.h>
#include <TqOsBase/containers/CStringArray.h>
#include <TqOsBase/containers/CStringList.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using counting_new::liveArrays;

constexpr long long kMost = std::numeric_limits<long long>::max();
constexpr const wchar_t* kNull = nullptr;

// The capacity is the third of the four 64-bit fields that make up the object.
long long capacityOf(const CStringArray& array) {
    std::int64_t fields[4];
    static_assert(sizeof fields == sizeof array);
    std::memcpy(fields, &array, sizeof fields);
    return fields[2];
}

TEST(CStringArray, GrowsByTheRules) {
    CStringArray array;
    long long expected = 0;
    for (long long size = 0; size < 20000; ++size) {
        ASSERT_EQ(array.Add(L"x"), size);
        if (size + 1 > expected)
            expected = size == 0 ? 1 : expected + (size < 32 ? 4 : size < 8200 ? size / 8 : 1024);
        ASSERT_EQ(capacityOf(array), expected) << size;
    }
    const struct {
        long long size, growBy, capacity;
    } steps[] = {{0, 100, 0},  {7, -1, 7},     {8, -1, 107}, {0, -1, 0},    {2, -1, 2},
                 {3, -5, 102}, {500, -1, 500}, {20, 0, 500}, {501, -1, 504}};
    for (const auto& step : steps) {
        array.SetSize(step.size, step.growBy);
        EXPECT_EQ(capacityOf(array), step.capacity) << step.size;
    }
    array.SetSize(20);
    array.FreeExtra();
    EXPECT_EQ(capacityOf(array), 20);
}

using Collections = reference::LeavesNothing;

TEST_F(Collections, EmptyArraysHoldNothing) {
    const int before = liveArrays();
    CStringArray array;
    array.SetSize(5);
    array.RemoveAt(0, 5);
    EXPECT_EQ(capacityOf(array), 5);
    EXPECT_EQ(liveArrays(), before + 1);
    const std::function<void()> emptied[] = {
        [&] { array.FreeExtra(); },
        [&] { array.SetSize(0); },
        [&] { EXPECT_EQ(array.Append(CStringArray()), 0); },
    };
    for (const auto& empty : emptied) {
        array.SetSize(5);
        array.RemoveAt(0, 5);
        empty();
        EXPECT_EQ(capacityOf(array), 0);
        EXPECT_EQ(liveArrays(), before);
    }
}

TEST_F(Collections, BadCountsAndIndicesLeaveAnArrayUnchanged) {
    CStringArray array;
    array.Add(kNull);
    array.Add(L"b");
    EXPECT_THROW(array.SetSize(-1), std::length_error);
    EXPECT_THROW(array.InsertEmpty(0, -1), std::length_error);
    EXPECT_THROW(array.InsertAt(0, L"x", -1), std::length_error);
    EXPECT_THROW(array.RemoveAt(0, -1), std::length_error);
    EXPECT_THROW(array.SetAtGrow(-1, L"x"), std::out_of_range);
    EXPECT_THROW(array.InsertEmpty(-1, 1), std::out_of_range);
    EXPECT_THROW(array.InsertAt(-1, &array), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(-1), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(2), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(1, kMost), std::out_of_range);
    EXPECT_THROW(array.SetSize(kMost), std::bad_alloc);
    EXPECT_THROW(array.SetAtGrow(kMost, L"x"), std::bad_alloc);
    EXPECT_THROW(array.InsertEmpty(1, kMost), std::bad_alloc);
    EXPECT_THROW(array.InsertEmpty(kMost, kMost), std::bad_alloc);
    array.RemoveAt(2, 0);
    array.SetSize(2, kMost);
    array.SetSize(5);
    EXPECT_THROW(array.SetSize(6), std::bad_alloc);
    array.SetSize(2, 0);
    array.InsertAt(9, static_cast<const CStringArray*>(nullptr));
    EXPECT_EQ(array.GetSize(), 2);
    EXPECT_EQ(array[0] + array[1], L"b");
    array.SetAt(1, kNull);
    EXPECT_EQ(array[1], L"");
}

#if !defined(NDEBUG)
TEST(CStringArrayDeathTest, AccessIsAsserted) {
    CStringArray array;
    array.Add(L"a");
    EXPECT_DEATH(static_cast<void>(array.GetAt(1)), "index");
    EXPECT_DEATH(array.SetAt(-1, L"b"), "index");
}
#endif

TEST_F(Collections, BlocksOfAListComeOneAtATimeAndGoTogether) {
    const int before = liveArrays();
    CStringList list(10);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 10; ++i)
            list.AddTail(L"x");
        list.RemoveHead();
        list.AddHead(L"recycled");
        EXPECT_EQ(liveArrays(), before + 1);
        list.AddTail(L"eleventh");
        while (list.GetCount() > 1)
            list.RemoveAt(list.GetTailPosition());
        EXPECT_EQ(liveArrays(), before + 2);
        list.RemoveTail();
        EXPECT_EQ(liveArrays(), before);
    }
    EXPECT_THROW(CStringList(0), std::invalid_argument);
    EXPECT_THROW(CStringList(-1), std::invalid_argument);

    CPlex* chain = nullptr;
    EXPECT_EQ(CPlex::Create(chain, 0, 8), nullptr);
    EXPECT_EQ(CPlex::Create(chain, 8, 0), nullptr);
    EXPECT_THROW(CPlex::Create(chain, SIZE_MAX / 4, 8), std::bad_alloc);
    CPlex* const first = CPlex::Create(chain, 3, 8);
    CPlex* const second = CPlex::Create(chain, 1, 8);
    EXPECT_EQ(chain, second);
    EXPECT_EQ(second->pNext, first);
    EXPECT_EQ(first->data(), first + 1);
    chain->FreeDataChain();
}

TEST_F(Collections, WithoutAnElementNoneIsTaken) {
    CStringList list(2);
    __POSITION* none = nullptr;
    EXPECT_THROW(list.GetHead(), std::out_of_range);
    EXPECT_THROW(list.GetTail(), std::out_of_range);
    EXPECT_THROW(list.RemoveHead(), std::out_of_range);
    EXPECT_THROW(list.RemoveTail(), std::out_of_range);
    EXPECT_THROW(list.GetNext(none), std::out_of_range);
    EXPECT_THROW(list.GetPrev(none), std::out_of_range);
    EXPECT_THROW(list.GetAt(none), std::out_of_range);
    EXPECT_THROW(list.SetAt(none, L"x"), std::out_of_range);
    EXPECT_THROW(list.RemoveAt(none), std::out_of_range);
    EXPECT_EQ(list.FindIndex(0), nullptr);
    EXPECT_EQ(list.Find(L""), nullptr);
    list.AddTail(static_cast<CStringList*>(nullptr));
    list.AddTail(kNull);
    list.SetAt(list.GetHeadPosition(), kNull);
    EXPECT_EQ(list.GetHead(), L"");
    EXPECT_EQ(list.Find(nullptr), list.GetHeadPosition());
    EXPECT_EQ(list.FindIndex(1), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);
}

void* number(std::size_t n) {
    return reinterpret_cast<void*>(n);
}

const wchar_t* storedKey(const CMapStringToPtr& map, const std::wstring& key) {
    const wchar_t* stored = nullptr;
    EXPECT_TRUE(map.LookupKey(key.c_str(), stored));
    return stored;
}

TEST_F(Collections, BlocksAndBucketsOfAMapComeWhenNeededAndGoTogether) {
    const int before = liveArrays();
    CMapStringToPtr map(2);
    EXPECT_EQ(map.GetHashTableSize(), 17U);
    void* value = number(7);
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(map.Lookup(L"a", value) || map.RemoveKey(L"a"));
        EXPECT_EQ(value, number(7));
        EXPECT_EQ(map[L"a"], nullptr);
        map.SetAt(L"b", number(2));
        const wchar_t* const a = storedKey(map, L"a");
        EXPECT_EQ(reinterpret_cast<const char*>(storedKey(map, L"b")) - reinterpret_cast<const char*>(a),
                  static_cast<std::ptrdiff_t>(sizeof(CMapStringToPtr::CAssoc)));
        EXPECT_TRUE(map.RemoveKey(L"a"));
        map.SetAt(L"recycled", nullptr);
        EXPECT_EQ(storedKey(map, L"recycled"), a);
        EXPECT_EQ(liveArrays(), before + 2);
        map.SetAt(L"third", nullptr);
        EXPECT_EQ(liveArrays(), before + 3);
        for (const wchar_t* key : {L"b", L"recycled", L"third"})
            EXPECT_TRUE(map.RemoveKey(key));
        EXPECT_EQ(liveArrays(), before);
    }
    map.InitHashTable(101, false);
    EXPECT_EQ(liveArrays(), before);
    map.InitHashTable(5);
    EXPECT_EQ(liveArrays(), before + 1);
    map.SetAt(L"a", nullptr);
    map.InitHashTable(6, false);
    EXPECT_THROW(map.InitHashTable(0), std::invalid_argument);
    EXPECT_EQ(map.GetHashTableSize(), 6U);
    EXPECT_EQ(liveArrays(), before);
    EXPECT_THROW(CMapStringToPtr(0), std::invalid_argument);
}

TEST_F(Collections, KeysOfEveryLength) {
    constexpr std::size_t kLongest = CMapStringToPtr::kKeyCapacity - 1;
    const std::wstring longest(kLongest, L'x');
    CMapStringToPtr map(1);
    void* value = nullptr;
    for (std::size_t length = 0; length <= kLongest; ++length) {
        const std::wstring key(length, L'\x4E00');
        // Takes over the entry of a long key, which must not show through.
        map.SetAt(longest.c_str(), nullptr);
        EXPECT_TRUE(map.RemoveKey(longest.c_str()));
        map.SetAt(key.c_str(), number(length + 1));
        const wchar_t* const stored = storedKey(map, key);
        ASSERT_EQ(stored, key);
        ASSERT_TRUE(std::all_of(stored + length, stored + kLongest + 1, [](wchar_t c) { return c == 0; })) << length;
        for (std::size_t i = 0; i < std::min<std::size_t>(length, 70); ++i) {
            std::wstring other = key; // of the same hash where there is room for two changes
            other[i] = static_cast<wchar_t>(other[i] + 1);
            if (i + 1 < length)
                other[i + 1] = static_cast<wchar_t>(other[i + 1] - 33);
            ASSERT_FALSE(map.Lookup(other.c_str(), value)) << length << ' ' << i;
        }
    }
    EXPECT_TRUE(map.Lookup(nullptr, value));
    EXPECT_EQ(value, number(1));

    const std::wstring tooLong(kLongest + 1, L'\x4E00');
    unsigned bucket = 99;
    unsigned untouched = 99;
    EXPECT_THROW(map.SetAt(tooLong.c_str(), nullptr), std::length_error);
    EXPECT_FALSE(map.Lookup(tooLong.c_str(), value) || map.RemoveKey(tooLong.c_str()));
    EXPECT_EQ(map.GetAssocAt(tooLong.c_str(), bucket, untouched), nullptr);
    EXPECT_LT(bucket, 17U);
    EXPECT_EQ(map.GetAssocAt(L"b", bucket, untouched), nullptr);
    EXPECT_EQ(bucket, L'b' % 17U);
    EXPECT_EQ(map.GetAssocAt(L"", bucket, untouched)->nBucket + bucket, 0U);
    EXPECT_EQ(untouched, 99U);

    // What the iteration has passed may be removed.
    CStdStr<wchar_t> key;
    long long left = map.GetCount();
    __POSITION* const start = map.GetStartPosition();
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(start), -1);
    for (__POSITION* pos = start; pos != nullptr; --left) {
        map.GetNextAssoc(pos, key, value);
        EXPECT_TRUE(map.RemoveKey(key.c_str()));
    }
    EXPECT_EQ(left, 0);
    for (__POSITION* pos : {start, static_cast<__POSITION*>(nullptr)})
        EXPECT_THROW(map.GetNextAssoc(pos, key, value), std::out_of_range);
}

TEST(CMapStringToString, StoresNothingAndNeedsNoMemory) {
    CMapStringToString map(10);
    CStdStr<wchar_t> value(L"untouched");
    const wchar_t* stored = nullptr;
    unsigned bucket = 7;
    unsigned hash = 7;
    __POSITION* pos = nullptr;
    const wchar_t* const text = L"longer than what a string keeps within itself";
    EXPECT_FALSE(counting_new::runsOut(0, [&] {
        map.InitHashTable(10);
        map.SetAt(text, text);
        map.RemoveKey(map[text].c_str());
    }));
    map[text] = L"value";
    EXPECT_EQ(map[text], L"");
    EXPECT_FALSE(map.Lookup(text, value) || map.LookupKey(text, stored) || map.IsEmpty());
    EXPECT_TRUE(map.RemoveKey(text));
    EXPECT_EQ(map.GetCount() + map.GetSize() + map.GetHashTableSize() + map.HashKey(text), 0);
    EXPECT_FALSE(map.PLookup(text) || std::as_const(map).PLookup(text) || map.NewAssoc());
    EXPECT_FALSE(map.PGetFirstAssoc() || map.PGetNextAssoc(nullptr) || map.GetAssocAt(text, bucket, hash));
    EXPECT_EQ(map.GetStartPosition(), nullptr);
    map.GetNextAssoc(pos, value, value);
    map.FreeAssoc(nullptr);
    map.RemoveAll();
    EXPECT_EQ(value, L"untouched");
    EXPECT_EQ(bucket + hash, 14U);
}

} // namespace
