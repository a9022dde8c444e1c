// What the random operations on vectors and narrow strings do not show: how slots grow, what is shared, and refusals.
#include <TqOsBase/containers/TqStringA.h>
#include <TqOsBase/containers/TqVector.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace {

using Wide = TqVector<wchar_t>;
using MemData = TqMemData<char, TqStrHeaderA, TqMemDataAllocator, TqPodReallocator<char>>;

static_assert(sizeof(TqStringA) == sizeof(char*));

TEST(TqVector, SlotsGrowByTheRule) {
    const struct {
        int physical, logical, grow, requested, expectedDefault, expectedFlat;
    } rows[] = {
        {8, 8, 8, 9, 16, 16},
        {8, 8, 8, 100, 100, 100},
        {8, 2, 8, 9, 10, 16},     // from the elements in use, not from the slots
        {8, 2, 100, 9, 102, 108}, // the grow length
        {8, 2, 8, 40, 40, 46},    // the shortfall is counted from the elements in use
        {65536, 65536, 8, 65537, 65544, 131072},
        {100000, 100000, 8, 100001, 100008, 165536},
        {100000, 100000, 8, 300000, 300000, 300000},
        {INT_MAX - 4, INT_MAX - 4, 8, INT_MAX - 2, INT_MAX, INT_MAX},
    };
    const auto grow = [](auto vector, int logical, int requested) {
        vector.setLogicalLength(logical);
        vector.setLogicalLength(requested);
        EXPECT_EQ(vector.logicalLength(), requested);
        const int slots = vector.physicalLength();
        vector.setLogicalLength(1);
        EXPECT_EQ(vector.physicalLength(), slots) << "slots are never given back";
        return std::pair(slots, vector.growLength());
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TqVectorDefaultGrowPolicy::grownLength(row.requested, row.logical, row.physical, row.grow),
                  row.expectedDefault);
        EXPECT_EQ(TqVectorFlatMemBufGrowPolicy::grownLength(row.requested, row.logical, row.physical, row.grow),
                  row.expectedFlat);
        if (row.physical > 1000000)
            continue;
        EXPECT_EQ(grow(TqVector<char>(row.physical, row.grow), row.logical, row.requested),
                  std::pair(row.expectedDefault, row.grow));
        EXPECT_EQ(grow(TqByteVector(row.physical, row.grow), row.logical, row.requested),
                  std::pair(row.expectedFlat, row.grow));
    }
}

TEST(TqVector, WithoutStorageSharesTheEmptyRecord) {
    auto& empty = Wide::Data::gEmptyVectorData;
    ASSERT_EQ(Wide::Data::gpEmptyVectorData, &empty);
    const int before = empty.m_refCount;
    ASSERT_GE(before, 1);
    {
        Wide a;
        Wide b(a);
        const Wide c(0, 3);
        EXPECT_EQ(int{empty.m_refCount}, before + 3);
        EXPECT_EQ(a.logicalLength() + a.physicalLength(), 0);
        EXPECT_EQ(a.asArrayPtr(), nullptr);
        EXPECT_EQ(empty.m_elementBits, ~std::uintptr_t{0});
        a.setLogicalLength(0);
        EXPECT_EQ(a.physicalLength(), 16) << "even no elements are no reason to stay with a shared record";
        b.setLogicalLength(1);
        EXPECT_EQ(b.physicalLength(), 8);
        EXPECT_EQ(int{empty.m_refCount}, before + 1);
        b.setPhysicalLength(0);
        EXPECT_EQ(int{empty.m_refCount}, before + 2);
        a = b;
        EXPECT_EQ(int{empty.m_refCount}, before + 3);
    }
    EXPECT_EQ(int{empty.m_refCount}, before);
    EXPECT_EQ(empty.m_logicalLength + empty.m_physicalLength, 0);
    const Wide::DataPtr record = Wide::newData(4, 8);
    EXPECT_TRUE(tq::detail::isInOrder(empty) && tq::detail::isInOrder(*record.get()));
    record->m_logicalLength = 5;
    EXPECT_FALSE(tq::detail::isInOrder(*record.get())) << "damage is seen by what assertions rely on";
    record->m_logicalLength = 0;
}

TEST(TqVector, SlotsMayBeTakenAndLengthsRefused) {
    Wide v;
    const std::unique_ptr<wchar_t[]> loose(v.last());
    ASSERT_NE(loose, nullptr) << "the last of an empty vector is the caller's to delete";
    loose[0] = L'x';
    EXPECT_TRUE(v.isEmpty());
    for (const wchar_t c : {L'a', L'b', L'c'})
        v.append(c);
    const Wide shared = v;
    EXPECT_THROW(v.setLogicalLength(-1), std::length_error);
    EXPECT_THROW(v.setPhysicalLength(INT_MIN), std::length_error);
    EXPECT_EQ(v.logicalLength(), 3);
    EXPECT_EQ(std::as_const(v).asArrayPtr(), shared.asArrayPtr()) << "still shared";
    v.setPhysicalLength(2);
    EXPECT_EQ(v.physicalLength(), 2);
    EXPECT_EQ(v.logicalLength(), 0) << "left to the caller";
    v.setLogicalLength(2);
    EXPECT_EQ(v[1], L'b');
    EXPECT_EQ(shared.logicalLength(), 3);
    EXPECT_EQ(shared[2], L'c');
}

TEST(TqVector, CopiesMayBeChangedAndReleasedOnDifferentThreads) {
    auto shared = std::make_unique<Wide>();
    shared->append(L'a');
    const auto churn = [](const Wide& copy) {
        for (int i = 0; i < 20000; ++i) {
            Wide another = copy;
            if (i % 2 == 0)
                another.append(L'b');
            ASSERT_EQ(copy.logicalLength() + (i % 2 == 0 ? 1 : 0), another.logicalLength());
        }
    };
    std::thread first(churn, *shared);
    std::thread second(churn, *shared);
    shared.reset(); // the last copy is let go by one of the threads
    first.join();
    second.join();
}

const TqStrHeaderA& headerOf(const TqStringA& s) {
    return reinterpret_cast<const TqStrHeaderA*>(s.c_str())[-1];
}

TEST(TqStringA, EmptyOnesShareThePublishedRecordAndTextsRoundUp) {
    const auto& empty = TqStrHeaderA::sm_EmptyStrA;
    const std::uint32_t holders = empty.m_refCount;
    EXPECT_GE(holders, 1U);
    EXPECT_EQ(empty.m_usedLength + empty.m_capacity + static_cast<unsigned>(empty.m_codePage), 0U);
    EXPECT_EQ(empty.m_growStep, 8U);
    EXPECT_EQ(reinterpret_cast<const char*>(&empty) + sizeof(TqStrHeaderA), &empty.m_terminator);
    EXPECT_EQ(empty.m_terminator, 0);
    EXPECT_EQ(TqMemDataHeader::sm_EmptyHeader.m_refCount, 1U);
    EXPECT_EQ(TqMemDataHeader::sm_EmptyHeader.m_growStep, 8U);
    EXPECT_STREQ(TqStringA::kEmptyStr, "");
    EXPECT_EQ(TqStringA().c_str(), TqStringA::kEmptyStr);
    {
        TqStringA s;
        s.assign("");
        s.assign(nullptr);
        EXPECT_EQ(empty.m_refCount, holders + 1);
        s.assign("abc");
        EXPECT_EQ(headerOf(s).m_usedLength, 4U);
        EXPECT_EQ(s.capacity(), 8U);
        EXPECT_EQ(empty.m_refCount, holders);
        s.assign("abcdefgh");
        EXPECT_EQ(s.capacity(), 16U) << "8, doubled";
        s.assign("x");
        EXPECT_EQ(s.capacity(), 16U) << "never shrinks";
        s.assign(std::string(200, 'y').c_str());
        EXPECT_EQ(s.capacity(), 16U + 201U - 2U) << "by what is missing";
        s.assign(nullptr);
        const TqStringA fromEmpty("");
        EXPECT_EQ(empty.m_refCount, holders + 1) << "a private header carries the code page";
        EXPECT_EQ(fromEmpty.capacity(), 0U);
        EXPECT_TRUE(fromEmpty.isEmpty());
        EXPECT_EQ(fromEmpty.codePage(), 0);
    }
    EXPECT_EQ(empty.m_refCount, holders);
}

TEST(TqMemData, GrowsInStepsUpTo64KiBAndRefusesSizesThatWouldWrap) {
    MemData data;
    const std::pair<std::size_t, std::size_t> rows[] = {
        {65536, 65536}, {65537, 131072}, {131073, 196608}, {1000000, 196608 + (1000000 - 131073)}};
    for (const auto& [needed, capacity] : rows) {
        data.copyBeforeWrite(needed);
        EXPECT_EQ(data.header().m_capacity, capacity);
    }
    const char* const text = data.data();
    EXPECT_FALSE(data.reallocData(SIZE_MAX - 8, 0));
    for (std::size_t less = 0; less < 64; ++less)
        EXPECT_THROW(data.copyBeforeWrite(SIZE_MAX - less), std::bad_alloc) << less;
    EXPECT_EQ(data.data(), text);
    EXPECT_EQ(data.header().m_usedLength, 1000000U);
    EXPECT_TRUE(tq::detail::isInOrder(static_cast<TqMemDataHeader&>(data.header())));
    data.header().m_usedLength = data.header().m_capacity + 1;
    EXPECT_FALSE(tq::detail::isInOrder(static_cast<TqMemDataHeader&>(data.header())))
        << "damage is seen by what assertions rely on";
    data.header().m_usedLength = 4;

    TqStrHeaderA& header = data.header();
    header.m_refCount = TqMemDataHeader::kPermanentCount;
    for (int i = 0; i < 3; ++i) { // neither counted nor freed
        MemData holder(data);
        MemData other;
        other = holder;
        EXPECT_EQ(header.m_refCount, TqMemDataHeader::kPermanentCount);
        holder.copyBeforeWrite(4);
        EXPECT_NE(&holder.header(), &header) << "always taken as shared";
    }
    header.m_refCount = 1;
}

TEST(TqStringA, BuffersKeepTheTextAndAreCutToTheBlock) {
    TqStringA s;
    EXPECT_EQ(s.getBuffer(-1), nullptr);
    char* buffer = s.getBuffer(5);
    EXPECT_STREQ(buffer, "") << "a terminated text from the start";
    std::memcpy(buffer, "ab", 3);
    s.releaseBuffer(-1);
    EXPECT_EQ(headerOf(s).m_usedLength, 3U);
    EXPECT_STREQ(s.c_str(), "ab");

    const TqStringA sharer = s;
    buffer = s.getBuffer(1);
    EXPECT_STREQ(buffer, "ab");
    buffer[0] = 'x';
    EXPECT_STREQ(sharer.c_str(), "ab");
    buffer = s.getBuffer(20);
    std::memset(buffer, 'q', s.capacity());
    for (const int count : {-1, INT_MAX, -2}) {
        s.releaseBuffer(count);
        EXPECT_EQ(s.length(), s.capacity() - 1) << "an unterminated text ends with its block";
    }
    std::memcpy(s.getBuffer(0), "a\0b", 4);
    s.releaseBuffer(3);
    EXPECT_EQ(s.length(), 3U) << "zero bytes stay part of the text";
    TqStringA carrier("");
    for (const int count : {0, -1, 7}) {
        s.releaseBuffer(count);
        carrier.releaseBuffer(count);
        EXPECT_TRUE(s.isEmpty() && carrier.isEmpty());
    }
    EXPECT_EQ(TqStrHeaderA::sm_EmptyStrA.m_usedLength, 0U);

    TqStringA shared("abcdef");
    const TqStringA holder = shared;
    shared.releaseBuffer(3); // without getBuffer(): it shows in the other holders
    EXPECT_STREQ(shared.c_str(), "abc");
    EXPECT_EQ(holder.length(), 3U);
    EXPECT_STREQ(holder.c_str(), "abcdef") << "the characters are not touched";
}

TEST(TqStringA, ComparesBytesAsUnsignedAndTakesNullAsEmpty) {
    const TqStringA a("a");
    const TqStringA high("\xE9");
    EXPECT_TRUE(a < high && a < "ab" && "A" < a);
    EXPECT_FALSE(a < a || a < TqStringA("a") || a < "a" || "a" < a);
    EXPECT_TRUE(a == "a" && "a" == a && a == TqStringA("a"));
    EXPECT_TRUE(a != high && a != "" && "b" != a);
    EXPECT_FALSE(a != a || a != "a" || "a" != a);
    EXPECT_TRUE(TqStringA() == static_cast<const char*>(nullptr));
    EXPECT_STREQ((a + static_cast<const char*>(nullptr)).c_str(), "a");
}

} // namespace
