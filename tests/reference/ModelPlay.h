#pragma once

#include "reference/CountingNew.h"
#include "reference/Testing.h"

namespace reference {

/// Something done to what is tested, and the same done to the model.
struct Operation {
    std::function<void()> act, model;
};

/// Does many of the operations in any order, and compares after each. `choose(random)` says what the next one works
/// with and how many of them may be done now, the first so many. Now and then one of the first allocations of an
/// operation fails: then nothing may have changed, and it is done again.
/// Returns how many failed.
template <class Choose, class Compare>
int play(unsigned seed, const std::vector<Operation>& operations, const Choose& choose, const Compare& expectSame) {
    std::mt19937 random(seed);
    int failures = 0;
    for (int step = 0; step < 20000; ++step) {
        const std::size_t usable = choose(random);
        const std::size_t number = random() % usable;
        if (counting_new::runsOut(random() % 3 == 0 ? static_cast<int>(random() % 6) : -1, operations[number].act)) {
            ++failures;
            expectSame();
            operations[number].act();
        }
        operations[number].model();
        expectSame();
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "step " << step << ", operation " << number;
            break;
        }
    }
    return failures;
}

/// A test after which nothing may be left allocated.
class LeavesNothing : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(counting_new::liveBlocks(), m_before); }

private:
    const int m_before = counting_new::liveBlocks();
};

} // namespace reference
