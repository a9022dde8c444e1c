#include "faults/FailingCalls.h"
#include "reference/CountingNew.h"
#include "reference/Testing.h"

namespace {

using counting_new::runsOut;
using counting_new::sweepAllocations;
using reference::withList;

// A change for which memory is missing leaves a text as it was, whether it is shared or not.
template <class Text>
void expectUnchanged(const std::vector<std::function<void(Text&)>>& changes) {
    const auto seen = [](const Text& t) { return std::vector<int>(&t[0], &t[0] + t.logicalLength()); };
    for (const auto& change : changes)
        for (const bool isShared : {true, false})
            sweepAllocations([&](int failing) {
                Text text(isShared ? 8 : 1, 1);
                text.append('a');
                const Text other = isShared ? text : Text();
                const auto before = seen(text);
                const bool ranOut = runsOut(failing, [&] { change(text); });
                EXPECT_EQ(seen(text) == before, ranOut) << &change - changes.data();
                EXPECT_EQ(seen(isShared ? other : text) == before, isShared || ranOut);
                return !ranOut;
            });
}

TEST(ResultFaults, TextsAreLeftAloneWithoutMemory) {
    expectUnchanged<TqVector<wchar_t>>(
        {[](auto& v) { TqCharMapper::multiByteToWideChar(kCodePageWestern, "A\\U+00E9", 8, v); },
         [](auto& v) { TqCharMapper::utf8ToUnicode("\xC3\xA9 and a long one after it", 25, v); },
         [](auto& v) { TqCharMapper::multiByteToWideChar(kCodePageUtf8, 0, "\xC3\xA9", 2, v); }});
    expectUnchanged<TqVector<char>>(
        {[](auto& v) { TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"A\u00E9\u00E9", 3, v); },
         [](auto& v) { TqCharMapper::unicodeToUtf8(L"A\u00E9\u4E2D and more of it", 18, v); }});
    TqStringA piece("a run");
    const TqStringA holder = piece;
    EXPECT_TRUE(runsOut(0, [&] { piece.releaseBuffer(2); }));
    EXPECT_EQ(piece.length() + holder.length(), 10U) << "as before";
    CStdStr<wchar_t> text(L"short");
    const wchar_t* const longText = L"a text that needs a block of its own, whatever the library";
    EXPECT_TRUE(runsOut(0, [&] { text = longText; }) && runsOut(0, [&] { text += longText; }) && text == L"short");

    sweepAllocations([](int failing) {
        wchar_t buffer[40] = L"?";
        wchar_t* out = buffer;
        const auto write = [&out](auto... rest) { return OutputWithFormat(&out, 40, rest...); };
        counting_new::failAfter(failing);
        const int count = withList(write, L"%2$d %1$s %3$.1f", L"a", 7, 2.5);
        counting_new::failAfter(-1);
        EXPECT_EQ(count, buffer[0] == L'7' ? 7 : -1);
        EXPECT_STREQ(buffer, count == 7 ? L"7 a 2.5" : L"");
        return count == 7;
    });
    for (wchar_t* (*const call)() :
         {+[] { return tqFltToF(1.5, 2); }, +[] { return tqFltToE(1.5, 2, 'e'); },
          +[] { return tqFltToG(1.5, 2, 'e', 0); }, +[] { return tqDToStr(1e300, 'f', 30, 0); }})
        sweepAllocations([call](int failing) {
            wchar_t* number = nullptr;
            EXPECT_FALSE(runsOut(failing, [&] { number = call(); }) && number != nullptr);
            const bool isOver = number != nullptr;
            tqFree(number);
            return isOver;
        });
}

// With the allocator's own pool in use to its end, so that every block comes from the heap.
class NumberFaults : public testing::Test {
protected:
    void SetUp() override {
        const auto* const pool = reinterpret_cast<const char*>(tqFCvtAllocator()->m_pool);
        for (int k = 15; k >= 0; --k)
            do
                m_held.push_back(TqGdImpl::Balloc(k));
            while (std::less_equal<>()(pool, reinterpret_cast<const char*>(m_held.back())) &&
                   reinterpret_cast<const char*>(m_held.back()) - pool < TqFCvtAllocator::kPoolBytes);
    }
    void TearDown() override { std::for_each(m_held.begin(), m_held.end(), TqGdImpl::Bfree); }

private:
    std::vector<Bigint*> m_held;
};

TEST_F(NumberFaults, EveryBlockComesBackAndOperandsThatAreNotConsumedStay) {
    Bigint* a = TqGdImpl::pow5mult(TqGdImpl::i2b(3), 100);
    Bigint* b = TqGdImpl::i2b(7);
    int point = 0, sign = 0;
    const std::function<void()> calls[] = {
        [&] { TqGdImpl::freedtoa(TqGdImpl::dtoa(0.1, 0, 0, &point, &sign, nullptr)); },
        [] { TqGdImpl::freedtoa(TqGdImpl::nrv_alloc(const_cast<char*>("Infinity"), nullptr, 100)); },
        [&] { // Each step consumes what the one before gave, when it fails too.
            Bigint* const steps = TqGdImpl::multadd(TqGdImpl::d2b(1.0 / 3, &point, &sign), 1000000000, 9);
            TqGdImpl::Bfree(TqGdImpl::lshift(TqGdImpl::pow5mult(steps, 700), 500));
        },
        [&] { TqGdImpl::Bfree(TqGdImpl::mult(a, b)); }, [&] { TqGdImpl::Bfree(TqGdImpl::diff(a, b)); }};
    for (const auto& call : calls) {
        SCOPED_TRACE(&call - calls);
        sweepAllocations([&](int failing) {
            const bool ranOut = runsOut(failing, call);
            EXPECT_EQ(b->words[0], 7U);
            return !ranOut;
        });
    }
    TqGdImpl::Bfree(a);
    TqGdImpl::Bfree(b);
    char text[400];
    EXPECT_FALSE(runsOut(0, [&] {
        tqFltToF(text, std::numeric_limits<double>::denorm_min(), 30);
        tqFltToE(text, 1e300 / 3, 120, 'e');
    })) << "needs no memory";
    EXPECT_GT(std::strlen(text), 120U);
}

TEST(ResultFaults, SystemMemoryThatEndsIsAnswered) {
    void* small = tqMalloc(100);
    wchar_t text[8] = L"before";
    const std::wstring longText(5000, L'y');
    faults::g_failsMalloc = true;
    const void* const results[] = {
        tqMalloc(100000),           tqAllocate(100000),   tqRealloc(small, 100000), tqReallocate(small, 100000),
        tqStrdup(longText.c_str()), tqAllocPageHeap(100), _wgetenv(L"PATH")};
    const int cut = withList([&](auto... rest) { return vswprintf_s(text, 7, rest...); }, L"%ls", longText.c_str());
    faults::g_failsMalloc = false;
    EXPECT_TRUE(std::count(std::begin(results), std::end(results), nullptr) == 7 && cut == -1);
    EXPECT_EQ(tqMsize(small), 104U) << "the block is untouched";
    tqFree(small);
}

// How many requests are refused while the system gives no pages. The heap serves on as soon as it does.
int countRefused() {
    std::vector<void*> blocks;
    int refused = 0;
    for (int i = 0; i < 3000; ++i) {
        const auto allocate = [i] {
            return i % 300 == 0 ? tqAllocPage() : i % 300 == 1 ? tqAllocPageHeap(8192) : tqMalloc(4096);
        };
        faults::g_failsProtection = true;
        void* block = allocate();
        faults::g_failsProtection = false;
        refused += block == nullptr;
        block = block == nullptr ? allocate() : block;
        blocks.push_back(std::memset(block, 'x', 4096));
    }
    for (void* block : blocks)
        tqFree(block);
    return refused;
}

TEST(ResultFaults, PagesThatCannotBeCommitted) {
    const int refused = countRefused();
    EXPECT_TRUE(refused > 20 && refused < 3000);
    std::thread([] { EXPECT_EQ(countRefused(), 0) << "the C library serves other threads then"; }).join();
}

} // namespace
