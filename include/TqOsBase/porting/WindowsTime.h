#pragma once

#include <TqOsBase/Export.h>
#include <TqOsBase/porting/WindowsTypes.h>

/// \file
/// Time, and text for the debugger, under their Windows names; how the names reach the global namespace is said in
/// WindowsNames.h.
namespace tq::windows {

/// Milliseconds since the system was started, of a clock that only goes forward. Time that the system sleeps may be
/// left out.
TQ_API unsigned long long GetTickCount64();
/// Waits for at least as many milliseconds; with 0 it lets another thread run, with INFINITE it does not return.
TQ_API void Sleep(unsigned int milliseconds);

/// @{
/// A clock that only goes forward, and how often it ticks in a second: 10,000,000 times. Both return 1, or 0 when the
/// pointer is null.
TQ_API int QueryPerformanceCounter(LARGE_INTEGER* count);
TQ_API int QueryPerformanceFrequency(LARGE_INTEGER* frequency);
/// @}

/// @{
/// Gives the text to the wide hook of TqTracer, which prints it to standard output until the application sets another.
/// A percent sign stays what it is. The narrow text is read as file names are: as UTF-8 or in the encoding of the
/// locale. Null, and without memory, nothing happens.
TQ_API void OutputDebugStringA(const char* text);
TQ_API void OutputDebugStringW(const wchar_t* text);
/// @}

} // namespace tq::windows

#if !defined(TQ_WINDOWS_QUALIFIED)
using tq::windows::GetTickCount64;
using tq::windows::OutputDebugStringA;
using tq::windows::OutputDebugStringW;
using tq::windows::QueryPerformanceCounter;
using tq::windows::QueryPerformanceFrequency;
using tq::windows::Sleep;
#endif
