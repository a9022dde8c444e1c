// Values for a debugger to show; it stops in stopHere.

#include "memory/TqHeap.h"

#include <TqOsBase/TqOsBase.h>

extern "C" __attribute__((noinline)) void stopHere() {
    static volatile int s_calls = 0;
    s_calls = s_calls + 1;
}

int main() {
    TqStringA emptyText;
    TqStringA text("a \"quoted\" layer");
    CStdStr<wchar_t> wide(L"Stra\u00DFe 5");
    CStdStr<wchar_t> longWide(L"longer than the string keeps within itself");
    TqVector<int> numbers(8, 4);
    for (const int n : {11, 22, 33})
        numbers.append(n);
    TqVector<int> sharing(numbers);
    TqVector<double> none;
    CStringArray array;
    array.Add(L"first");
    array.Add(L"second");
    CStringList list(10);
    list.AddTail(L"head");
    list.AddTail(L"tail");
    CMapStringToPtr map(10);
    map.SetAt(L"one", &map);
    map.SetAt(L"two", nullptr);
    void* const unit = tqAllocPage();
    void* const block = tqMalloc(8);
    const tq::detail::GlobalHeap& heap = tq::detail::g_tqGlobalHeap;
    stopHere();
    tqFree(block);
    tqFree(unit);
    return heap.segments().state(0) + static_cast<int>(none.logicalLength()) + static_cast<int>(emptyText.length());
}
