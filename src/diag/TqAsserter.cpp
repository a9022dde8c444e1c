#include "platform/StandardStreams.h"
#include "platform/Utf8.h"

#include <TqOsBase/diag/TqAsserter.h>

#include <cwchar>

using namespace tq;

namespace {

void otherAssert(const wchar_t*, const wchar_t* file, int line) {
    if (file == nullptr)
        file = L"(null)";
    if (platform::canPrintWide(file))
        std::wprintf(L"\nTqAsserter failed-- %ls:%d ", file, line);
    else
        platform::printNarrow("\nTqAsserter failed-- %s:%d ", platform::utf8Of(file).c_str(), line);
}

} // namespace

void (*TqAsserter::sm_pfnAssert)(const wchar_t*, const wchar_t*, int) = otherAssert;
