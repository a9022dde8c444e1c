#include "base/FormattedText.h"
#include "base/Hook.h"
#include "base/StandardStreams.h"
#include "base/Utf8.h"

#include <TqOsBase/diag/TqTracer.h>

#include <cstdarg>
#include <cwchar>

using namespace tq;

void (*TqTracer::sm_pfnTraceA)(const char*) = TqTracer::defaultTraceA;
void (*TqTracer::sm_pfnTraceW)(const wchar_t*) = TqTracer::defaultTraceW;

namespace {

constexpr const wchar_t* kOutOfMemory = L"Out of memory!!";

} // namespace

TqTracer::TqTracer(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    detail::vprintNarrow(format, arguments);
    va_end(arguments);
}

TqTracer::TqTracer(const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const detail::FormattedText formatted(format, arguments);
    va_end(arguments);
    if (formatted.length() < 0)
        throw kOutOfMemory;
    detail::readHook(sm_pfnTraceW)(formatted.text());
}

void TqTracer::defaultTraceA(const char* text) {
    detail::printNarrow(text);
}

void TqTracer::defaultTraceW(const wchar_t* text) {
    if (detail::canPrintWide(text))
        std::wprintf(text);
    else
        detail::printNarrow(detail::utf8Of(text).c_str()); // directives are ASCII: the same in both
}

void TqTracer::setTraceFunctionA(void (*function)(const char*)) {
    detail::setHook(sm_pfnTraceA, function);
}

void TqTracer::setTraceFunctionW(void (*function)(const wchar_t*)) {
    detail::setHook(sm_pfnTraceW, function);
}
