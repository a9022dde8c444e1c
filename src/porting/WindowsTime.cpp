#include "base/FileName.h"
#include "base/Hook.h"

#include <TqOsBase/diag/TqTracer.h>
#include <TqOsBase/porting/WindowsTime.h>

#include <chrono>
#include <new>
#include <string>
#include <thread>

namespace {

// Not the nanoseconds of the clock: callers multiply counts by 1,000,000 before they divide, which would run over after
// hours.
constexpr long long kTicksPerSecond = 10'000'000;

template <class Unit>
Unit sinceStart() {
    return std::chrono::duration_cast<Unit>(std::chrono::steady_clock::now().time_since_epoch());
}

int give(LARGE_INTEGER* out, long long value) {
    if (out != nullptr)
        out->QuadPart = value;
    return out != nullptr;
}

// The hook that is there at the start takes its text as a format.
std::wstring asFormat(const wchar_t* text) {
    std::wstring format;
    for (; *text != L'\0'; ++text)
        format.append(*text == L'%' ? 2 : 1, *text);
    return format;
}

} // namespace

unsigned long long tq::windows::GetTickCount64() {
    return static_cast<unsigned long long>(sinceStart<std::chrono::milliseconds>().count());
}

void tq::windows::Sleep(unsigned int milliseconds) {
    if (milliseconds == INFINITE)
        for (;;)
            std::this_thread::sleep_for(std::chrono::hours(1));
    if (milliseconds == 0)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

int tq::windows::QueryPerformanceCounter(LARGE_INTEGER* count) {
    return give(count, sinceStart<std::chrono::duration<long long, std::ratio<1, kTicksPerSecond>>>().count());
}

int tq::windows::QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
    return give(frequency, kTicksPerSecond);
}

void tq::windows::OutputDebugStringA(const char* text) {
    if (text == nullptr)
        return;
    std::wstring wide;
    try {
        detail::fromSystemText(text, wide);
    } catch (const std::bad_alloc&) {
        return;
    }
    OutputDebugStringW(wide.c_str());
}

void tq::windows::OutputDebugStringW(const wchar_t* text) {
    if (text == nullptr)
        return;
    const auto hook = detail::readHook(TqTracer::sm_pfnTraceW);
    if (hook != TqTracer::defaultTraceW) {
        hook(text);
        return;
    }
    try {
        hook(asFormat(text).c_str());
    } catch (const std::bad_alloc&) {
        return;
    }
}
