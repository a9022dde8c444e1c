// Values for a debugger to show; it stops in stopHere.

#include <TqOsBase/TqOsBase.h>

#if __has_include("memory/TqHeap.h") // where the library's sources are at hand
#include "memory/TqHeap.h"
#endif

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
    TqVector<wchar_t> wideText;
    for (const wchar_t c : {L'\u00C9', L't', L'\u00E9', L'\0'})
        wideText.append(c);
    CStringArray array;
    array.Add(L"first");
    array.Add(L"second");
    CStringList list(10);
    list.AddTail(L"head");
    list.AddTail(L"tail");
    CMapStringToPtr map(10);
    map.SetAt(L"one", &map);
    map.SetAt(L"two", nullptr);
    TqFlatMemBuf bytes;
    bytes.writeBytes(reinterpret_cast<const unsigned char*>("0123456789"), 10);
    TqException plain(L"plain.cpp", 12);
    TqExceptionWithMsg told(L"told.cpp", 13, L"message");
    TqErrorStatus status(Lumo::kEmptyPath, L"no path", L"status.cpp", 14);
    void* const unit = tqAllocPage();
    void* const block = tqMalloc(8);
#if __has_include("memory/TqHeap.h")
    const tq::detail::GlobalHeap& heap = tq::detail::g_tqGlobalHeap;
    (void)heap;
#endif
    const TqFlatMemBuf& bytesAgain = bytes;
    (void)bytesAgain;
    stopHere();
    tqFree(block);
    tqFree(unit);
    return static_cast<int>(none.logicalLength()) + static_cast<int>(emptyText.length());
}
