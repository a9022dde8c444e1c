#pragma once

/// \file
/// Traces in the way of printf.

#include <TqOsBase/Export.h>

/// Writes a printf-style message to wherever the application wants its traces: the constructors do all the work, and
/// what they construct is thrown away at once, as in `TqTracer(L"%d items", n);`.
///
/// The hooks may be set and used by any thread at any time through the functions here; who stores into the variables
/// does so before other threads trace. Hooks are called in the thread that traces, by several at once. Set functions,
/// not null: they are called unguarded. Formats are the C library's, so `%s` takes narrow text and `%ls` wide text in
/// both kinds.
class TQ_API TqTracer {
public:
    /// Prints to standard output as vprintf() does. Deliberately asks no hook: sm_pfnTraceA can be set, but is for
    /// the application's own use.
    [[gnu::format(printf, 2, 3)]] explicit TqTracer(const char* format, ...);

    /// Formats in memory and calls sm_pfnTraceW with the text, which lives until the hook returns. Throws the
    /// `const wchar_t*` text "Out of memory!!" when there is no memory or the text cannot be formatted: an argument
    /// that the C library refuses, or 524,288 characters and more.
    explicit TqTracer(const wchar_t* format, ...);

    /// @{
    /// The hooks at the start: print to standard output with `text` as the format of printf() and no arguments, so a
    /// percent sign in it is deliberately taken as a directive. The wide one prints UTF-8, so that the program's own
    /// printf() and std::cout go on working, unless standard output is a stream of wide text already.
    static void defaultTraceA(const char* text);
    static void defaultTraceW(const wchar_t* text);
    /// @}

    /// @{
    /// Stores the pointer as it is, null included. Traces under way in other threads may still use the one before.
    static void setTraceFunctionA(void (*function)(const char*));
    static void setTraceFunctionW(void (*function)(const wchar_t*));
    /// @}

    static void (*sm_pfnTraceA)(const char* text);    ///< For the application's own use.
    static void (*sm_pfnTraceW)(const wchar_t* text); ///< Gets each wide text.
};
