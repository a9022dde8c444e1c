// clang-format off
// What tq-porting is to find stands in a comment at the end of its line; everything else is to be let alone.
#include "windows.h"
#define _strdup ourDuplicate
#define COPY(to, from) \
    lstrcatW(to, from)

static int Sleep(int seconds) { return seconds; }
int _wtoi(const wchar_t* text);
const char* const kText = "GetACP()";
const char* const kRaw = R"x(_mbsrev(text); ")x";

int main() {
    // _wtol(L"1") in a comment
    /* GetLastError() in
       another */
    object.GetACP();
    pointer->Sleep(1);
    archive::CloseHandle(handle);
    std::vector<int>::swprintf(1);
    long length = _wtol(L"12");                             // loses _wtol
    if (_stricmp(a, b) == 0)                                // header _stricmp
        return ::_wtoi(text);                               // loses _wtoi
    _mbsrev(bytes);                                         // ends _mbsrev
    UINT page = GetACP();                                   // differs GetACP
    int n = lstrlenA("x");                                  // complete lstrlenA
    swprintf(buffer, 20, L"%ls %d", L"x", 1);
    swprintf(buffer, L"%lld", big);                         // loses swprintf
    wprintf(L"%s", L"wide");                                // format wprintf
    wprintf(L"%ws %s", wide, "narrow");                     // format wprintf
    wprintf(L"%I64d%% %5.2f", big, 1.0);                    // format wprintf
    wprintf(L"%S %C", narrow, 'c');                         // format wprintf, format wprintf
    wprintf(L"%d %*d", 1, width);                           // format wprintf
    swprintf_s(b, L"%s %I64d %d", L"x", 1LL);               // header swprintf_s, format swprintf_s
    wprintf(L"%ls %hs %d" L"%u", wide, narrow, (1, 2), f(1, 2));
    Sleep(5);
    _strdup(text);
    return length == n ? GetFileAttributesW(name) : 0;      // not answered GetFileAttributesW
}
