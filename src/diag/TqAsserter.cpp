#include "base/StandardStreams.h"
#include "base/Utf8.h"

#include <TqOsBase/diag/TqAsserter.h>

#include <cwchar>

using namespace tq;

namespace {

void otherAssert(const wchar_t*, const wchar_t* file, int line) {
    if (file == nullptr)
        file = L"(null)";
    if (detail::canPrintWide(file))
        std::wprintf(L"\nTqAsserter failed-- %ls:%d ", file, line);
    else
        detail::printNarrow("\nTqAsserter failed-- %s:%d ", detail::utf8Of(file).c_str(), line);
}

} // namespace

void (*TqAsserter::sm_pfnAssert)(const wchar_t*, const wchar_t*, int) = otherAssert;
