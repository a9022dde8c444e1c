// Uses every room of the installed library once, through the umbrella header only.

#include <TqOsBase/TqOsBase.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace {

int g_failures = 0;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::printf("failed: %s\n", what);
        ++g_failures;
    }
}

void memory() {
    void* block = tqMalloc(100);
    expect(tqMsize(block) == 104, "a request of 100 bytes is served by the pool of 104");
    block = tqRealloc(block, 5000);
    std::memset(block, 0, 5000);
    tqFree(block);
}

void text() {
    TqVector<wchar_t> wide;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, "A\\U+00E9", 8, wide);
    expect(wide.logicalLength() == 3 && wide[1] == 0xE9, "an escape becomes its character");
    TqVector<char> narrow;
    TqCharMapper::wideCharToMultiByte(kCodePageWestern, wide.asArrayPtr(), 2, narrow);
    expect(std::strcmp(narrow.asArrayPtr(), "A\\U+00E9") == 0, "and back");
    expect(LmCodePage::LanguageToCodePage(0x0411) == 932, "Japanese has code page 932");
    expect(GetACP() == 0, "there is no ANSI code page");
}

void containers() {
    TqStringA string("pier");
    const TqStringA copy = string;
    string += " 3";
    expect(string == "pier 3" && copy == "pier", "copies do not see a change");
    CStringList list(10);
    list.AddTail(L"a");
    expect(list.Find(L"a") == list.GetHeadPosition(), "the list finds its string");
}

void streams(const char* path) {
    const std::wstring name(path, path + std::strlen(path));
    Lumo::ErrorStatus status = Lumo::eOk;
    const unsigned char bytes[] = {1, 2, 3};
    TqFileStreamBuf* out =
        createFileOStreamBuf(name.c_str(), &status, TqIO::kAccessWrite, TqIO::kShareDenyNone, TqIO::kCreateAlways, 0);
    out->writeBytes(bytes, 3);
    destoryFileIOStreamBuf(out);
    TqFileStreamBuf* in =
        createFileIStreamBuf(name.c_str(), &status, TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting);
    expect(status == Lumo::eOk && in->length() == 3 && in->readByte() == 1, "what was written is read");
    destoryFileIOStreamBuf(in);
}

// The classes are thrown in the library and caught here, across its border.
void exceptions() {
    TqFlatMemBuf buffer;
    try {
        buffer.readByte();
        expect(false, "reading at the end throws");
    } catch (const TqException& error) {
        expect(std::wstring(error.m_pszFile) == L"End of stream buffer!", "the reason is carried");
    }
    try {
        throw TqErrorStatus(Lumo::eFileOpenFailed, L"no disk", L"main.cpp", 1);
    } catch (const TqException& error) {
        expect(std::wstring(error.description()) == L"error type: 53\tmessage:no disk", "the description is built");
    }
    try {
        TqVector<char>().setLogicalLength(-1);
        expect(false, "a negative length throws");
    } catch (const std::length_error&) {
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    memory();
    text();
    containers();
    streams(argv[1]);
    exceptions();
    return g_failures == 0 ? 0 : 1;
}
