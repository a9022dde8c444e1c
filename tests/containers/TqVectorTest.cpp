#include <TqOsBase/containers/TqVector.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Wide = TqVector<wchar_t>;
using Narrow = TqVector<char>;

struct Slots {
    static inline int alive = 0;
};

template <class T>
struct CountingAllocator {
    static T* allocate(int count) {
        ++Slots::alive;
        return new T[static_cast<std::size_t>(count)];
    }
    static void release(T* slots, int) noexcept {
        --Slots::alive;
        delete[] slots;
    }
};

using Counted = TqVector<short, CountingAllocator<short>, TqRefCounter, TqVectorFlatMemBufGrowPolicy>;

TEST(TqVector, CapacityFollowsTheGrowthRule) {
    struct Row {
        int physical, logical, grow, requested, expectedDefault, expectedFlat;
    };
    const Row rows[] = {
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
    for (const Row& row : rows) {
        EXPECT_EQ(TqVectorDefaultGrowPolicy::grownLength(row.requested, row.logical, row.physical, row.grow),
                  row.expectedDefault);
        EXPECT_EQ(TqVectorFlatMemBufGrowPolicy::grownLength(row.requested, row.logical, row.physical, row.grow),
                  row.expectedFlat);
        if (row.physical > 1000000)
            continue;
        Narrow narrow(row.physical, row.grow);
        TqByteVector bytes(row.physical, row.grow);
        narrow.setLogicalLength(row.logical);
        bytes.setLogicalLength(row.logical);
        narrow.setLogicalLength(row.requested);
        bytes.setLogicalLength(row.requested);
        EXPECT_EQ(narrow.physicalLength(), row.expectedDefault);
        EXPECT_EQ(bytes.physicalLength(), row.expectedFlat);
        EXPECT_EQ(narrow.logicalLength(), row.requested);
        EXPECT_EQ(bytes.growLength(), row.grow);
        narrow.setLogicalLength(1);
        EXPECT_EQ(narrow.physicalLength(), row.expectedDefault) << "slots are never given back";
    }
}

TEST(TqVector, AVectorWithoutStorageSharesTheEmptyRecord) {
    auto& empty = Wide::Data::gEmptyVectorData;
    ASSERT_EQ(Wide::Data::gpEmptyVectorData, &empty);
    const int before = empty.m_refCount;
    ASSERT_GE(before, 1);
    {
        Wide a;
        Wide b(a);
        Wide c(0, 3);
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
        const Wide& same = b;
        b = same;
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

TEST(TqVector, PhysicalLengthMovesElementsAndLeavesTheLengthToTheCaller) {
    Narrow v;
    for (const char c : {'a', 'b', 'c'})
        v.append(c);
    const Narrow other = v;
    v.setPhysicalLength(2);
    EXPECT_EQ(v.physicalLength(), 2);
    EXPECT_EQ(v.logicalLength(), 0);
    v.setLogicalLength(2);
    EXPECT_EQ(v[1], 'b');
    EXPECT_EQ(other.logicalLength(), 3);
    EXPECT_EQ(other[2], 'c');
}

TEST(TqVector, LastOfAnEmptyVectorIsTheCallersToDelete) {
    Wide v;
    const std::unique_ptr<wchar_t[]> loose(v.last());
    ASSERT_NE(loose, nullptr);
    loose[0] = L'x';
    EXPECT_TRUE(v.isEmpty());
    v.append(L'y');
    const Wide shared = v;
    *v.last() = L'z';
    EXPECT_EQ(v[0], L'z');
    EXPECT_EQ(shared[0], L'y');
}

TEST(TqVector, NegativeLengthsLeaveItUnchanged) {
    Wide v;
    v.append(7);
    const Wide shared = v;
    EXPECT_THROW(v.setLogicalLength(-1), std::length_error);
    EXPECT_THROW(v.setPhysicalLength(INT_MIN), std::length_error);
    EXPECT_EQ(v.logicalLength(), 1);
    EXPECT_EQ(std::as_const(v).asArrayPtr(), shared.asArrayPtr()) << "still shared";
}

TEST(TqVector, AnElementOfItsOwnCanBeAppended) {
    Wide v;
    v.append(L'\u4E2D');
    for (int i = 0; i < 100; ++i)
        v.append(std::as_const(v)[i]);
    EXPECT_EQ(v[100], L'\u4E2D');
}

// A crowd of vectors that copy, change and drop each other, against plain vectors.
template <class Vector, class Element>
void playAgainstModel(unsigned seed) {
    constexpr std::size_t kCrowd = 6;
    Vector vectors[kCrowd];
    std::vector<Element> models[kCrowd];
    std::mt19937 random(seed);
    for (int step = 0; step < 20000; ++step) {
        const std::size_t i = random() % kCrowd;
        const std::size_t j = random() % kCrowd;
        const auto value = static_cast<Element>(random() % 100);
        Vector& v = vectors[i];
        auto& model = models[i];
        switch (random() % 6) {
        case 0:
            v = vectors[j];
            model = models[j];
            break;
        case 1: {
            const int length = static_cast<int>(random() % 40);
            const int gained = length - v.logicalLength();
            v.setLogicalLength(length);
            model.resize(static_cast<std::size_t>(length), value);
            for (int k = length - gained; k < length; ++k)
                v[k] = value;
            break;
        }
        case 2:
            v.append(value);
            model.push_back(value);
            break;
        case 3:
            if (!model.empty()) {
                const std::size_t at = random() % model.size();
                v[static_cast<int>(at)] = value;
                model[at] = value;
            }
            break;
        case 4:
            if (!model.empty()) {
                *v.last() = value;
                model.back() = value;
            }
            break;
        default:
            if (Element* slots = v.asArrayPtr(); slots != nullptr && !model.empty()) {
                slots[0] = value;
                model[0] = value;
            }
        }
        for (std::size_t k = 0; k < kCrowd; ++k) {
            const Vector& seen = vectors[k];
            ASSERT_EQ(static_cast<std::size_t>(seen.logicalLength()), models[k].size());
            ASSERT_LE(seen.logicalLength(), seen.physicalLength());
            ASSERT_TRUE(std::equal(models[k].begin(), models[k].end(), seen.asArrayPtr())) << "step " << step;
        }
    }
}

TEST(TqVector, CopiesNeverSeeEachOthersChanges) {
    playAgainstModel<Wide, wchar_t>(1);
    playAgainstModel<Narrow, char>(2);
    playAgainstModel<TqByteVector, unsigned char>(3);
    playAgainstModel<Counted, short>(4);
    EXPECT_EQ(Slots::alive, 0);
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

} // namespace
