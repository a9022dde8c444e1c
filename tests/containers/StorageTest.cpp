// What random operations do not show: when storage grows, is shared and goes, what is refused, and ranges.
#include "reference/ModelPlay.h"

#include <TqOsBase/containers/Range.h>

namespace {

using counting_new::liveBlocks;
using Collections = reference::LeavesNothing;
using Wide = TqVector<wchar_t>;
using MemData = TqMemData<char, TqStrHeaderA, TqMemDataAllocator, TqPodReallocator<char>>;

constexpr long long kMost = std::numeric_limits<long long>::max();
constexpr const wchar_t* kNull = nullptr;

template <class Exception>
void expectEachThrows(std::initializer_list<std::function<void()>> calls) {
    for (const auto& call : calls)
        EXPECT_THROW(call(), Exception) << "call " << &call - calls.begin();
}

// The capacity is the third of the four 64-bit fields that make up the object.
long long capacityOf(const CStringArray& array) {
    std::int64_t fields[4];
    static_assert(sizeof fields == sizeof array);
    std::memcpy(fields, &array, sizeof fields);
    return fields[2];
}

TEST_F(Collections, ArraysGrowByTheRulesAndHoldNothingWhenEmpty) {
    const int before = liveBlocks();
    CStringArray array;
    long long expected = 0;
    for (long long size = 0; size < 20000; ++size) {
        ASSERT_EQ(array.Add(L"x"), size);
        if (size + 1 > expected)
            expected = size == 0 ? 1 : expected + (size < 32 ? 4 : size < 8200 ? size / 8 : 1024);
        ASSERT_EQ(capacityOf(array), expected) << size;
    }
    const std::array<int, 3> steps[] = {{0, 100, 0},  {7, -1, 7},     {8, -1, 107}, {0, -1, 0},    {2, -1, 2},
                                        {3, -5, 102}, {500, -1, 500}, {20, 0, 500}, {501, -1, 504}};
    for (const auto& [size, growBy, capacity] : steps) {
        array.SetSize(size, growBy);
        EXPECT_EQ(capacityOf(array), capacity) << size;
    }
    for (int way = 0; way < 3; ++way) {
        array.FreeExtra();
        EXPECT_EQ(capacityOf(array), array.GetSize());
        array.SetSize(5);
        array.RemoveAt(0, 5);
        EXPECT_EQ(liveBlocks(), before + 1);
        way == 0 ? array.FreeExtra() : way == 1 ? array.SetSize(0) : void(array.Append(CStringArray()));
        EXPECT_EQ(capacityOf(array) + liveBlocks(), before);
    }
}

TEST_F(Collections, BadCountsAndIndicesLeaveAnArrayUnchanged) {
    CStringArray array;
    array.Add(kNull);
    array.Add(L"b");
    expectEachThrows<std::length_error>(
        {[&] { array.SetSize(-1); }, [&] { array.InsertEmpty(0, -1); }, [&] { array.RemoveAt(0, -1); }});
    expectEachThrows<std::out_of_range>({[&] { array.SetAtGrow(-1, L"x"); }, [&] { array.InsertAt(-1, &array); },
                                         [&] { array.RemoveAt(-1); }, [&] { array.RemoveAt(2); },
                                         [&] { array.RemoveAt(1, kMost); }});
    expectEachThrows<std::bad_alloc>({[&] { array.SetSize(kMost); }, [&] { array.SetAtGrow(kMost, L"x"); },
                                      [&] { array.InsertEmpty(kMost, kMost); }});
    array.RemoveAt(2, 0);
    array.SetSize(2, kMost);
    array.SetSize(5);
    EXPECT_THROW(array.SetSize(6), std::bad_alloc);
    array.SetSize(2, 0);
    array.InsertAt(9, static_cast<const CStringArray*>(nullptr));
    EXPECT_EQ(array[0] + array[array.GetSize() - 1], L"b");
    array.SetAt(1, kNull);
    EXPECT_EQ(array[1], L"");
}

TEST_F(Collections, BlocksOfAListComeOneAtATimeAndGoTogether) {
    const int before = liveBlocks();
    CStringList list(10);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 10; ++i)
            list.AddTail(L"x");
        list.RemoveHead();
        list.AddHead(L"r");
        EXPECT_EQ(liveBlocks(), before + 1);
        list.AddTail(L"e");
        while (list.GetCount() > 1)
            list.RemoveAt(list.GetTailPosition());
        EXPECT_EQ(liveBlocks(), before + 2);
        list.RemoveTail();
        EXPECT_EQ(liveBlocks(), before);
    }
    EXPECT_THROW(CStringList(0), std::invalid_argument);
    CPlex* chain = nullptr;
    EXPECT_FALSE(CPlex::Create(chain, 0, 8) || CPlex::Create(chain, 8, 0));
    EXPECT_THROW(CPlex::Create(chain, SIZE_MAX / 4, 8), std::bad_alloc);
    CPlex* const first = CPlex::Create(chain, 3, 8);
    EXPECT_TRUE(CPlex::Create(chain, 1, 8) == chain && chain->pNext == first && first->data() == first + 1);
    chain->FreeDataChain();
}

TEST_F(Collections, WhereAListHasNoElementNoneIsTaken) {
    CStringList list(2);
    __POSITION* none = nullptr;
    expectEachThrows<std::out_of_range>({[&] { list.GetHead(); }, [&] { list.GetTail(); }, [&] { list.RemoveHead(); },
                                         [&] { list.RemoveTail(); }, [&] { list.GetNext(none); },
                                         [&] { list.GetPrev(none); }, [&] { list.GetAt(none); },
                                         [&] { list.SetAt(none, L"x"); }, [&] { list.RemoveAt(none); }});
    EXPECT_FALSE(list.FindIndex(0) || list.Find(L""));
    list.AddTail(static_cast<CStringList*>(nullptr));
    list.AddHead(static_cast<CStringList*>(nullptr));
    list.AddTail(kNull);
    list.SetAt(list.GetHeadPosition(), kNull);
    EXPECT_EQ(std::as_const(list).GetTail() + std::as_const(list).GetAt(list.Find(nullptr)), L"");
    EXPECT_FALSE(list.Find(nullptr) != list.GetHeadPosition() || list.FindIndex(1) || list.FindIndex(-1));
}

const wchar_t* storedKey(const CMapStringToPtr& map, const std::wstring& key) {
    const wchar_t* stored = nullptr;
    EXPECT_TRUE(map.LookupKey(key.c_str(), stored));
    return stored;
}

TEST_F(Collections, BlocksAndBucketsOfAMapComeWhenNeededAndGoTogether) {
    const int before = liveBlocks();
    CMapStringToPtr map(2);
    EXPECT_EQ(map.GetHashTableSize(), 17U);
    void* value = &map;
    for (int round = 0; round < 2; ++round) {
        const wchar_t* a = nullptr;
        EXPECT_FALSE(map.Lookup(L"a", value) || map.RemoveKey(L"a") || map.LookupKey(L"a", a) || value != &map);
        EXPECT_EQ(map[L"a"], nullptr);
        map.SetAt(L"b", nullptr);
        a = storedKey(map, L"a");
        EXPECT_TRUE(map.RemoveKey(L"a"));
        map.SetAt(L"r", nullptr);
        EXPECT_TRUE(storedKey(map, L"r") == a && liveBlocks() == before + 2);
        map.SetAt(L"c", nullptr);
        EXPECT_TRUE(liveBlocks() == before + 3 && map.RemoveKey(L"b") && map.RemoveKey(L"r") && map.RemoveKey(L"c"));
        EXPECT_EQ(liveBlocks(), before);
    }
    map.InitHashTable(5);
    EXPECT_EQ(liveBlocks(), before + 1);
    map.SetAt(L"a", nullptr);
    map.InitHashTable(6, false);
    EXPECT_THROW(map.InitHashTable(0), std::invalid_argument);
    EXPECT_EQ(liveBlocks(), before);
    EXPECT_THROW(CMapStringToPtr(0), std::invalid_argument);
}

TEST_F(Collections, KeysOfEveryLength) {
    constexpr std::size_t kLongest = CMapStringToPtr::kKeyCapacity - 1;
    const std::wstring longest(kLongest, L'x');
    CMapStringToPtr map(1);
    void* value = nullptr;
    for (std::size_t length = 0; length <= kLongest; ++length) {
        std::wstring key;
        while (key.size() < length)
            key.push_back(static_cast<wchar_t>(0x4E00 + length + key.size()));
        // Takes over the entry of a long key, which must not show through.
        map.SetAt(longest.c_str(), nullptr);
        EXPECT_TRUE(map.RemoveKey(longest.c_str()));
        map.SetAt(key.c_str(), &map);
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
    EXPECT_TRUE(map.Lookup(nullptr, value) && value == &map);
    const std::wstring tooLong(kLongest + 1, L'\x4E00');
    unsigned bucket = 99, untouched = 99;
    EXPECT_THROW(map.SetAt(tooLong.c_str(), nullptr), std::length_error);
    EXPECT_FALSE(map.Lookup(tooLong.c_str(), value) || map.RemoveKey(tooLong.c_str()));
    EXPECT_FALSE(map.GetAssocAt(tooLong.c_str(), bucket, untouched) || bucket >= 17);
    EXPECT_FALSE(map.GetAssocAt(L"b", bucket, untouched) || bucket != L'b' % 17);
    EXPECT_TRUE(map.GetAssocAt(L"", bucket, untouched)->nBucket + bucket == 0U && untouched == 99U);

    // What the iteration has passed may be removed.
    CStdStr<wchar_t> key;
    __POSITION* const start = map.GetStartPosition();
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(start), -1);
    for (__POSITION* pos = start; pos != nullptr;) {
        map.GetNextAssoc(pos, key, value);
        EXPECT_TRUE(map.RemoveKey(key.c_str()));
    }
    EXPECT_TRUE(map.IsEmpty());
    for (__POSITION* pos : {start, static_cast<__POSITION*>(nullptr)})
        EXPECT_THROW(map.GetNextAssoc(pos, key, value), std::out_of_range);
}

TEST(CMapStringToString, StoresNothingAndNeedsNoMemory) {
    CMapStringToString map(10);
    const CMapStringToString& seen = map;
    CStdStr<wchar_t> value(L"untouched");
    const wchar_t* const text = L"longer than what a string keeps within itself";
    const wchar_t* stored = nullptr;
    __POSITION* pos = nullptr;
    unsigned bucket = 7, hash = 7;
    EXPECT_FALSE(counting_new::runsOut(0, [&] {
        map.InitHashTable(10);
        map.SetAt(text, text);
        map.RemoveKey(map[text].c_str());
    }));
    map[text] = L"value";
    EXPECT_TRUE(map[text].empty() && map.RemoveKey(text));
    EXPECT_FALSE(map.Lookup(text, value) || map.LookupKey(text, stored) || map.IsEmpty());
    EXPECT_EQ(map.GetCount() + map.GetSize() + map.GetHashTableSize() + map.HashKey(text), 0);
    EXPECT_FALSE(map.PLookup(text) || seen.PLookup(text) || map.NewAssoc() || map.GetAssocAt(text, bucket, hash));
    EXPECT_FALSE(map.PGetFirstAssoc() || seen.PGetFirstAssoc() || map.PGetNextAssoc(nullptr) ||
                 seen.PGetNextAssoc(nullptr) || map.GetStartPosition());
    map.GetNextAssoc(pos, value, value);
    map.FreeAssoc(nullptr);
    map.RemoveAll();
    EXPECT_TRUE(value == L"untouched" && bucket + hash == 14);
}

TEST(TqVector, SlotsGrowByTheRule) {
    // slots, elements, growth, what is asked for; what the default and the flat policy give
    const std::array<int, 6> rows[] = {{8, 2, 8, 9, 10, 16},     // from the elements in use, not from the slots
                                       {8, 2, 100, 9, 102, 108}, // the grow length
                                       {8, 2, 8, 40, 40, 46},    // the shortfall is counted from the elements in use
                                       {65536, 65536, 8, 65537, 65544, 131072},
                                       {100000, 100000, 8, 100001, 100008, 165536},
                                       {100000, 100000, 8, 300000, 300000, 300000},
                                       {INT_MAX - 4, INT_MAX - 4, 8, INT_MAX - 2, INT_MAX, INT_MAX}};
    for (const auto& [physical, logical, grow, requested, expectedDefault, expectedFlat] : rows) {
        EXPECT_EQ(TqVectorDefaultGrowPolicy::grownLength(requested, logical, physical, grow), expectedDefault);
        EXPECT_EQ(TqVectorFlatMemBufGrowPolicy::grownLength(requested, logical, physical, grow), expectedFlat);
        TqVector<char> vector(physical % 1000000, grow);
        for (const int length : {logical % 1000000, requested % 1000000, 1}) // slots are never given back
            vector.setLogicalLength(length);
        EXPECT_TRUE(vector.physicalLength() == expectedDefault || physical > 1000000);
    }
}

TEST(TqVector, WithoutStorageSharesTheEmptyRecord) {
    auto& empty = Wide::Data::gEmptyVectorData;
    ASSERT_EQ(Wide::Data::gpEmptyVectorData, &empty);
    const int before = empty.m_refCount;
    ASSERT_GE(before, 1);
    {
        Wide a, b(a);
        const Wide c(0, 3);
        EXPECT_EQ(int{empty.m_refCount}, before + 3);
        EXPECT_TRUE(a.asArrayPtr() == nullptr && empty.m_elementBits == ~std::uintptr_t{0});
        a.setLogicalLength(0);
        EXPECT_EQ(a.physicalLength(), 16) << "even no elements are no reason to stay with a shared record";
        b.setLogicalLength(1);
        EXPECT_EQ(b.physicalLength(), 8);
        b.setPhysicalLength(0);
        EXPECT_EQ(int{empty.m_refCount}, before + 2);
    }
    EXPECT_EQ(int{empty.m_refCount}, before);
    const Wide::DataPtr record = Wide::newData(4, 8);
    EXPECT_TRUE(tq::detail::isInOrder(empty) && tq::detail::isInOrder(*record.get()));
    record->m_logicalLength = 5;
    EXPECT_FALSE(tq::detail::isInOrder(*record.get())) << "damage is seen by what assertions rely on";
    record->m_logicalLength = 0;
}

TEST(TqVector, SlotsMayBeTakenAndLengthsRefused) {
    Wide v;
    const std::unique_ptr<wchar_t[]> loose(v.last());
    loose[0] = L'x'; // the last of an empty vector is the caller's to delete
    EXPECT_TRUE(v.isEmpty());
    tq::append(v, {L'a', L'b', L'c'});
    const Wide shared = v;
    expectEachThrows<std::length_error>({[&] { v.setLogicalLength(-1); }, [&] { v.setPhysicalLength(INT_MIN); }});
    EXPECT_EQ(std::as_const(v).asArrayPtr(), shared.asArrayPtr()) << "still shared";
    v.setPhysicalLength(2);
    EXPECT_TRUE(v.physicalLength() == 2 && v.logicalLength() == 0) << "left to the caller";
    v.setLogicalLength(2);
    EXPECT_TRUE(v[1] == L'b' && std::wstring(shared.asArrayPtr(), 3) == L"abc");
}

TEST(TqStringA, EmptyOnesShareThePublishedRecordAndTextsRoundUp) {
    const auto& empty = TqStrHeaderA::sm_EmptyStrA;
    const std::uint32_t holders = empty.m_refCount;
    EXPECT_EQ(empty.m_usedLength + empty.m_capacity + static_cast<unsigned>(empty.m_codePage + empty.m_terminator), 0U);
    EXPECT_EQ(reinterpret_cast<const char*>(&empty) + sizeof(TqStrHeaderA), &empty.m_terminator);
    EXPECT_TRUE(TqMemDataHeader::sm_EmptyHeader.m_refCount == 1 && TqMemDataHeader::sm_EmptyHeader.m_growStep == 8);
    EXPECT_EQ(TqStringA().c_str(), TqStringA::kEmptyStr);
    TqStringA s;
    s.assign("");
    const std::pair<std::string, std::size_t> rows[] = {
        {"abc", 8}, {"abcdefgh", 16}, {"x", 16}, {std::string(200, 'y'), 16 + 201 - 2}}; // doubled; by what is missing
    for (const auto& [text, capacity] : rows) {
        s.assign(text.c_str());
        EXPECT_EQ(reinterpret_cast<const TqStrHeaderA*>(s.c_str())[-1].m_usedLength, text.size() + 1);
        EXPECT_TRUE(s.capacity() == capacity && empty.m_refCount == holders);
    }
    s.assign(nullptr);
    const TqStringA fromEmpty("");
    EXPECT_EQ(empty.m_refCount, holders + 1) << "a private header carries the code page";
    EXPECT_TRUE(fromEmpty.capacity() == 0 && fromEmpty.codePage() == 0);
}

TEST(TqMemData, GrowsInStepsUpTo64KiBAndRefusesSizesThatWouldWrap) {
    MemData data;
    const std::pair<std::size_t, std::size_t> rows[] = {
        {65536, 65536}, {65537, 131072}, {131073, 196608}, {1000000, 196608 + (1000000 - 131073)}};
    for (const auto& [needed, capacity] : rows) {
        data.copyBeforeWrite(needed);
        EXPECT_EQ(data.header().m_capacity, capacity);
    }
    EXPECT_FALSE(data.reallocData(SIZE_MAX - 8, 0));
    for (std::size_t less = 0; less < 64; ++less)
        EXPECT_THROW(data.copyBeforeWrite(SIZE_MAX - less), std::bad_alloc) << less;
    TqStrHeaderA& header = data.header();
    EXPECT_TRUE(tq::detail::isInOrder(static_cast<TqMemDataHeader&>(header)));
    header.m_usedLength = header.m_capacity + 1;
    EXPECT_FALSE(tq::detail::isInOrder(static_cast<TqMemDataHeader&>(header))) << "what assertions rely on";
    header.m_usedLength = 4;
    header.m_refCount = TqMemDataHeader::kPermanentCount;
    {
        MemData holder(data);
        MemData other; // neither counted nor freed
        other = holder;
        holder.copyBeforeWrite(4);
        EXPECT_NE(&holder.header(), &header) << "always taken as shared";
    }
    EXPECT_EQ(header.m_refCount, TqMemDataHeader::kPermanentCount);
    header.m_refCount = 1;
}

TEST(TqStringA, BuffersKeepTheTextAndAreCutToTheBlock) {
    TqStringA s;
    EXPECT_EQ(s.getBuffer(-1), nullptr);
    EXPECT_STREQ(s.getBuffer(5), "") << "a terminated text from the start";
    std::memcpy(s.getBuffer(5), "ab", 3);
    s.releaseBuffer(-1);
    EXPECT_EQ(s.length(), 2U);
    const TqStringA sharer = s;
    char* buffer = s.getBuffer(1);
    EXPECT_STREQ(buffer, "ab");
    buffer[0] = 'x';
    EXPECT_STREQ(sharer.c_str(), "ab");
    buffer = s.getBuffer(20);
    std::memset(buffer, 'q', s.capacity());
    EXPECT_EQ(s.getBuffer(20)[20], 0) << "terminated where it may end";
    buffer[20] = 'q';
    for (const int count : {-1, INT_MAX, -2}) {
        s.releaseBuffer(count);
        EXPECT_EQ(s.length(), s.capacity() - 1) << "an unterminated text ends with its block";
    }
    std::memcpy(s.getBuffer(0), "a\0b", 4);
    s.releaseBuffer(3);
    EXPECT_EQ(s.length(), 3U) << "zero bytes stay part of the text";
    TqStringA carrier("");
    carrier.releaseBuffer(7);
    EXPECT_TRUE(carrier.isEmpty() && TqStringA().isEmpty());

    TqStringA shared("abcdef");
    const TqStringA holder = shared;
    shared.releaseBuffer(3); // without getBuffer(): its length shows in the other holders, the characters stay
    EXPECT_TRUE(shared == "abc" && holder.length() == 3 && holder.c_str() == std::string("abcdef"));
}

TEST(TqStringA, ComparesBytesAsUnsignedAndTakesNullAsEmpty) {
    const TqStringA a("a");
    const TqStringA high("\xE9");
    const char* const none = nullptr;
    EXPECT_TRUE(a < high && a < "ab" && "A" < a && TqStringA() == none && a + none == "a");
    EXPECT_FALSE(a < a || a < TqStringA("a") || a < "a" || "a" < a || a != a || a != "a" || "a" != a);
    EXPECT_TRUE(a == "a" && "a" == a && a == TqStringA("a") && a != high && a != "" && "b" != a);
}

// The collections in range-based for and in algorithms, and filled from lists in braces.
template <class Collection>
std::wstring joined(const Collection& collection) {
    std::wstring text;
    for (const auto& element : collection)
        text += element;
    return text;
}

TEST(Range, ElementsInOrder) {
    TqVector<wchar_t> vector;
    EXPECT_TRUE(begin(vector) == end(vector) && begin(std::as_const(vector)) == end(std::as_const(vector)));
    tq::append(vector, {L'c', L'a', L'b'});
    const TqVector<wchar_t> shared = vector;
    std::sort(begin(vector), end(vector));
    EXPECT_EQ(joined(vector) + joined(shared), L"abccab") << "writing takes storage of its own";
    CStringArray array;
    tq::append(array, {L"x", nullptr, L"yz"});
    EXPECT_EQ(joined(array), L"xyz");
    std::reverse(begin(array), end(array));
    CStringList list(2);
    EXPECT_TRUE(begin(list) == end(list));
    tq::append(list, {L"p", L"", L"qr"});
    for (auto& text : list)
        text += L";";
    EXPECT_EQ(joined(array) + joined(list), L"yzxp;;qr;");
    EXPECT_EQ(std::count(begin(std::as_const(list)), end(std::as_const(list)), L";"), 1);
}

TEST(Range, EntriesOfAMap) {
    CMapStringToPtr map(4);
    EXPECT_TRUE(begin(map) == end(map));
    tq::append(map, {{L"one", &map}, {L"two", nullptr}});
    std::wstring keys;
    for (const auto& [key, value] : map) {
        keys += key + (value == &map ? L"=map;" : L"=null;");
        EXPECT_TRUE(map.RemoveKey(key.c_str())) << "the entry at hand may go";
    }
    EXPECT_TRUE(map.IsEmpty() && (keys == L"one=map;two=null;" || keys == L"two=null;one=map;"));
}

} // namespace
