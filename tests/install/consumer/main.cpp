// Uses every room of the installed library once, through the umbrella header and the one that is asked for.

#define TQ_WINDOWS_QUALIFIED
#include <TqOsBase/TqOsBase.h>
#include <TqOsBase/porting/WindowsNames.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

// A program keeps its own function of a Windows name.
int _stricmp(const char*, const char*) {
    return 42;
}

namespace {

int g_failures = 0;

void expect(bool holds, const char* what) {
    if (!holds) {
        std::printf("failed: %s\n", what);
        ++g_failures;
    }
}

void rooms() {
    void* const block = std::memset(tqRealloc(tqMalloc(100), 5000), 0, 5000);
    expect(tqMsize(block) >= 5000, "memory");
    tqFree(block);
    TqVector<wchar_t> wide;
    TqCharMapper::multiByteToWideChar(kCodePageWestern, "A\\U+00E9", 8, wide);
    expect(wide.logicalLength() == 3 && wide[1] == 0xE9, "an escape becomes its character");
    expect(LmCodePage::LanguageToCodePage(0x0411) == 932 && GetACP() == 0, "code pages");
    expect(TqStringA("pier") + " 3" == "pier 3" && CStringList(10).Find(L"a") == nullptr, "containers");
    expect(_stricmp("a", "A") == 42 && tq::windows::_stricmp("a", "A") == 0, "two functions of one name");
    char small[4];
    expect(tq::windows::sprintf_s(small, "%ws", L"abcd") == -1 && small[0] == '\0', "without room there is no text");
    LARGE_INTEGER ticks;
    expect(tq::windows::QueryPerformanceCounter(&ticks) == TRUE, "the clock ticks");
}

void streams(const char* path) {
    const std::wstring name = tq::wideName(path);
    Lumo::ErrorStatus status = Lumo::kOk;
    TqFileStreamBuf* out =
        createFileOStreamBuf(name.c_str(), &status, TqIO::kAccessWrite, TqIO::kShareDenyNone, TqIO::kCreateAlways, 0);
    out->writeByte(1);
    destoryFileIOStreamBuf(out);
    TqFileStreamBuf* in =
        createFileIStreamBuf(name.c_str(), &status, TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting);
    expect(status == Lumo::kOk && in->length() == 1 && in->readByte() == 1, "what was written is read");
    destoryFileIOStreamBuf(in);
}

// A stream of this program, whose operations the library calls.
class OwnStream : public TqFlatMemBuf {
public:
    void writeBytes(const unsigned char*, std::uint32_t) override {
        throw TqExceptionWithMsg(L"main.cpp", 2, L"thrown in the program");
    }
    using TqFlatMemBuf::writeBytes;
};

// What is thrown on one side of the library's border is caught on the other one, by its own type or that of its base.
template <class Thrown, class Call, class Holds>
void expectThrown(const char* what, const Call& call, const Holds& holds) {
    bool isCaught = false;
    try {
        call();
    } catch (const Thrown& thrown) {
        isCaught = holds(thrown);
    } catch (...) {
    }
    expect(isCaught, what);
}

void exceptions() {
    TqFlatMemBuf buffer;
    expectThrown<TqException>(
        "reading at the end throws", [&] { buffer.readByte(); },
        [](const TqException& error) { return std::wstring(error.m_pszFile) == L"End of stream buffer!"; });
    expectThrown<Lumo::ErrorStatus>(
        "a file without a name",
        [] { TqFileSystem::createFileBuf(L"", TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting); },
        [](Lumo::ErrorStatus status) { return status == 365; });
    expectThrown<std::length_error>(
        "a negative length", [] { TqVector<char>().setLogicalLength(-1); }, [](const std::exception&) { return true; });
    buffer.setlength(3);
    expectThrown<TqExceptionWithMsg>(
        "the library lets an exception of the program pass", [&] { OwnStream().copyFrom(&buffer, 0, 3); },
        [](const TqException& error) { return std::wstring(error.description()) == L"thrown in the program"; });
    TqFileStreamBuf* file = createFileIOStreamBuf(nullptr);
    expect(dynamic_cast<TqFileIOStreamBuf*>(file) != nullptr && dynamic_cast<TqFileOStreamBuf*>(file) == nullptr,
           "the type of an object of the library is known");
    destoryFileIOStreamBuf(file);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    rooms();
    streams(argv[1]);
    exceptions();
    return g_failures == 0 ? 0 : 1;
}
