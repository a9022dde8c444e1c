#include "faults/FailingCalls.h"
#include "reference/CountingNew.h"

#include <TqOsBase/TqOsBase.h>

#include <cstdarg>
#include <cstring>
#include <cwchar>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace {

using faults::runsOut;
using faults::sweepAllocations;

int output(wchar_t* buffer, int capacity, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = OutputWithFormat(&buffer, capacity, format, args);
    va_end(args);
    return result;
}

int printed(wchar_t* buffer, std::size_t size, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int result = vswprintf_s(buffer, size, format, args);
    va_end(args);
    return result;
}

TEST(ResultFaults, FormatWithPositionsIsRefusedWithoutMemory) {
    EXPECT_GT(sweepAllocations([](int failing) {
                  wchar_t text[40] = L"?";
                  counting_new::failAfter(failing);
                  const int count = output(text, 40, L"%2$d %1$s %3$.1f", L"a", 7, 2.5);
                  counting_new::failAfter(-1);
                  EXPECT_EQ(count, text[0] == L'7' ? 7 : -1);
                  EXPECT_STREQ(text, count == 7 ? L"7 a 2.5" : L"");
                  return count == 7;
              }),
              0);
}

TEST(ResultFaults, WideTextsOfNumbersAreNullWithoutMemory) {
    wchar_t* (*const calls[])() = {
        [] { return tqFltToF(1.5, 2); },
        [] { return tqFltToE(1.5, 2, 'e'); },
        [] { return tqFltToG(1.5, 2, 'e', 0); },
        [] { return tqDToStr(1e300, 'f', 30, 0); },
    };
    for (const auto call : calls)
        EXPECT_GT(sweepAllocations([call](int failing) {
                      wchar_t* text = nullptr;
                      const bool ranOut = runsOut(failing, [&] { text = call(); });
                      EXPECT_FALSE(ranOut && text != nullptr);
                      const bool isOver = text != nullptr;
                      tqFree(text);
                      return isOver;
                  }),
                  0);
}

// With the allocator's own pool in use to its end, so that every block comes from the heap.
class NumberFaults : public testing::Test {
protected:
    void SetUp() override {
        const auto* first = reinterpret_cast<const unsigned char*>(tqFCvtAllocator()->m_pool);
        for (int k = 15; k >= 0; --k)
            for (;;) {
                Bigint* block = TqGdImpl::Balloc(k);
                const auto* address = reinterpret_cast<const unsigned char*>(block);
                if (address < first || address >= first + TqFCvtAllocator::kPoolBytes) {
                    TqGdImpl::Bfree(block);
                    break;
                }
                m_held.push_back(block);
            }
    }
    void TearDown() override {
        for (Bigint* block : m_held)
            TqGdImpl::Bfree(block);
    }

private:
    std::vector<Bigint*> m_held;
};

TEST_F(NumberFaults, WritingGivesEveryBlockBack) {
    const auto digits = [](double d, int mode, int ndigits) {
        int point = 0;
        int sign = 0;
        char* text = TqGdImpl::dtoa(d, mode, ndigits, &point, &sign, nullptr);
        const std::string copy = text; // may need a block of its own
        TqGdImpl::freedtoa(text);
        return !copy.empty();
    };
    const std::function<bool()> calls[] = {
        [&] { return digits(0.1, 0, 0); },
        [] { // needs no memory
            char text[400];
            tqFltToF(text, std::numeric_limits<double>::denorm_min(), 30);
            tqFltToE(text, 1e300 / 3, 120, 'e');
            return std::strlen(text) > 120;
        },
        [] {
            TqGdImpl::freedtoa(TqGdImpl::nrv_alloc(const_cast<char*>("Infinity"), nullptr, 100));
            return true;
        },
        [] {
            int exponent = 0;
            int bits = 0;
            // Each step consumes what the one before gave, when it fails too.
            Bigint* b = TqGdImpl::d2b(1.0 / 3, &exponent, &bits);
            b = TqGdImpl::multadd(b, 1000000000, 9);
            b = TqGdImpl::pow5mult(b, 700);
            b = TqGdImpl::lshift(b, 500);
            TqGdImpl::Bfree(b);
            return true;
        },
    };
    int failures = 0;
    for (const auto& call : calls) {
        SCOPED_TRACE(&call - calls);
        failures += sweepAllocations([&](int failing) {
            bool isRight = false;
            const bool ranOut = runsOut(failing, [&] { isRight = call(); });
            EXPECT_TRUE(ranOut || isRight);
            return !ranOut;
        });
    }
    EXPECT_GT(failures, 10);
}

TEST_F(NumberFaults, OperandsThatAreNotConsumedStay) {
    Bigint* a = TqGdImpl::pow5mult(TqGdImpl::i2b(3), 100);
    Bigint* b = TqGdImpl::i2b(7);
    Bigint* (*const calls[])(Bigint*, Bigint*) = {TqGdImpl::mult, TqGdImpl::diff};
    for (const auto call : calls)
        EXPECT_GT(sweepAllocations([&](int failing) {
                      Bigint* result = nullptr;
                      const bool ranOut = runsOut(failing, [&] { result = call(a, b); });
                      if (!ranOut)
                          TqGdImpl::Bfree(result);
                      EXPECT_EQ(b->words[0], 7U);
                      return !ranOut;
                  }),
                  0);
    TqGdImpl::Bfree(a);
    TqGdImpl::Bfree(b);
}

TEST(ResultFaults, SystemMemoryThatEndsIsAnswered) {
    void* small = tqMalloc(100);
    void* large = tqMalloc(100000);
    std::memset(large, 'x', 100000);
    wchar_t text[8] = L"before";
    const std::wstring longText(5000, L'y');
    faults::failMalloc(true);
    EXPECT_EQ(tqMalloc(100000), nullptr);
    EXPECT_EQ(tqAllocate(100000), nullptr);
    EXPECT_EQ(tqRealloc(small, 100000), nullptr);
    EXPECT_EQ(tqReallocate(small, 100000), nullptr);
    EXPECT_EQ(tqStrdup(longText.c_str()), nullptr);
    EXPECT_EQ(tqAllocPageHeap(100), nullptr);
    const int cut = printed(text, 7, L"%ls", longText.c_str());
    const wchar_t* variable = _wgetenv(L"PATH");
    faults::failMalloc(false);
    EXPECT_EQ(cut, -1);
    EXPECT_EQ(variable, nullptr);
    EXPECT_EQ(tqMsize(small), 104U) << "the block is untouched";
    EXPECT_EQ(static_cast<char*>(large)[99999], 'x');
    tqFree(small);
    tqFree(large);
}

// Pages that the system does not give: null, and the heap serves on as soon as it does.
TEST(ResultFaults, PagesThatCannotBeCommitted) {
    std::vector<void*> blocks;
    int refused = 0;
    for (int i = 0; i < 3000; ++i) {
        const bool isPage = i % 300 == 0;
        const auto allocate = [isPage] { return isPage ? tqAllocPage() : tqMalloc(4096); };
        faults::failProtection(true);
        void* block = allocate();
        faults::failProtection(false);
        if (block == nullptr) {
            ++refused;
            block = allocate();
            ASSERT_NE(block, nullptr);
        }
        std::memset(block, 'x', 4096);
        blocks.push_back(block);
    }
    EXPECT_GT(refused, 20);
    EXPECT_LT(refused, 3000);
    for (void* block : blocks)
        tqFree(block);
}

} // namespace
