// Threads that use all that the process shares but the heap's own program does not: shared vectors and strings that are
// handed over and let go elsewhere, digit strings, unit settings, exclusive opens, font definitions, user-defined
// characters, hooks, positions, environment and locale, and forks meanwhile. The suite runs a short round; under
// ThreadSanitizer any race ends it. Ends with 0 when every result was one that a single thread could have had.
// Usage: shared_state_threads [ROUNDS [SEED]]

#include <TqOsBase/TqOsBase.h>

#include <array>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using Random = std::mt19937;
using Vector = TqVector<wchar_t>;

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::abort();
    }
}

std::wstring folder;

// Where threads leave things for each other.
template <class T>
class Exchange {
public:
    ~Exchange() {
        for (auto& place : m_places)
            delete place.load();
    }

    // Leaves `mine` and takes what lay there, or null.
    T* swap(T* mine, Random& random) { return m_places[random() % m_places.size()].exchange(mine); }

private:
    std::array<std::atomic<T*>, 16> m_places{};
};

void vectors(Random& random) {
    static Exchange<Vector> exchange;
    Vector* const got = exchange.swap(nullptr, random);
    Vector mine;
    if (got != nullptr) {
        mine = *got;
        delete got;
        require(mine.logicalLength() >= 1 && mine[0] == L'v', "a vector from elsewhere");
    } else {
        mine.append(L'v');
    }
    delete exchange.swap(new Vector(mine), random);
    mine.append(static_cast<wchar_t>(random()));
    if (mine.logicalLength() > 100)
        mine.setLogicalLength(1);
    delete exchange.swap(new Vector(mine), random);
}

void strings(Random& random) {
    static Exchange<TqStringA> exchange;
    TqStringA mine;
    if (TqStringA* const got = exchange.swap(nullptr, random)) {
        mine = *got;
        delete got;
        require(*mine.c_str() == 's', "a string from elsewhere");
    }
    if (mine.isEmpty() || mine.length() > 100)
        mine = TqStringA("s");
    delete exchange.swap(new TqStringA(mine), random);
    mine += "+";
    delete exchange.swap(new TqStringA(mine), random);
}

// A digit string that whoever takes it lets go.
struct Digits {
    explicit Digits(double v) : value(v), text(TqGdImpl::dtoa(v, 0, 0, &point, &sign, nullptr)) {}
    Digits(const Digits&) = delete;
    Digits& operator=(const Digits&) = delete;
    ~Digits() {
        const std::string again = "." + std::string(text) + "e" + std::to_string(point);
        require(std::strtod(again.c_str(), nullptr) == value, "digits");
        TqGdImpl::freedtoa(text);
    }

    double value;
    int point = 0;
    int sign = 0;
    char* text;
};

void digits(Random& random) {
    static Exchange<Digits> exchange;
    delete exchange.swap(
        new Digits(std::ldexp(1.0 + static_cast<double>(random()) / 3e9, static_cast<int>(random() % 600) - 300)),
        random);
    Bigint* const power = TqGdImpl::pow5mult(TqGdImpl::i2b(1), static_cast<int>(random() % 900));
    require(power->words[0] % 2 == 1, "a power of five");
    TqGdImpl::Bfree(power);
}

// Two settings that differ in every part: a mixture shows as a third text.
void unitSettings(Random& random) {
    LumoAppUnitSets settings;
    if (random() % 2 == 0) {
        settings.linearUnitMode = kLinearArchitectural;
        settings.linearPrecision = 1;
        settings.angularUnitMode = kAngularDegrees;
        settings.angularPrecision = 0;
        settings.angleBase = 1.5707963267948966;
        settings.angleDirection = 1;
        settings.flags = kUnitFlagDash;
    }
    if (random() % 4 == 0)
        initOsBaseUnits(settings);
    wchar_t text[64];
    FormatUtil::outputStringWithFormat(text, 64, L"%.20q*|%.20q*", qModeWord(kQTypeLength), 30.5,
                                       qModeWord(kQTypeAngle), 0.0);
    const std::wstring_view shown = text;
    const std::wstring_view length = shown.substr(0, shown.find(L'|'));
    require(length == L"30.5000" || length == L"2'6-1/2\"", "a length of one setting");
    const std::wstring_view angle = shown.substr(shown.find(L'|') + 1);
    require(angle == L"0.0000g" || angle == L"90", "an angle of one setting");
}

void exclusiveOpens(Random& random) {
    static std::array<std::atomic<int>, 3> holders{};
    const std::size_t number = random() % holders.size();
    const std::wstring name = folder + L"/exclusive" + std::to_wstring(number);
    TqFileIOStreamBuf buffer;
    if (buffer.open(name.c_str(), TqIO::kAccessReadWrite, TqIO::kShareDenyWrite, TqIO::kOpenExisting) != Lumo::kOk)
        return;
    require(holders[number].fetch_add(1) == 0, "one holder of an exclusive file");
    buffer.writeBytes(reinterpret_cast<const unsigned char*>("text"), 4);
    holders[number].fetch_sub(1);
    buffer.close();
}

struct FontReader : CReadUserDefBigfontIni {
    void ReadIni(const wchar_t* path, std::map<std::wstring, int>&) override { ReadBigfontIni(path); }
    bool FindIniFile(wchar_t* buffer, int capacity, const wchar_t* fileName) override {
        const std::wstring path = folder + L"/" + fileName;
        return path.copy(buffer, static_cast<std::size_t>(capacity)) == path.size();
    }
};

void codePages(Random& random) {
    FontReader reader;
    require(TqCharMapper::getCpIndexByBigFont(L"stress.shx", &reader) == 3, "a font of the user's file");
    require(LmCodePage::SysCodePage() == static_cast<int>(GetACP() & 0xFFFF), "the code page of the system");
    wchar_t unit = 0;
    const auto code = static_cast<short>(1 + random() % 200);
    require(LmCodePage::UnicodeForUserDefinedDBCS(unit, code, 936) && unit != 0, "a slot");
    int codePage = 0;
    require(LmCodePage::CodepageForUserDefinedUnicode(codePage, static_cast<short>(unit)) && codePage == 936,
            "the code page of a slot");
    require(tq::wideName("\xE4\xB8\xAD") == L"\u4E2D", "a name");
}

std::atomic<unsigned> traced{0};
void traceOne(const wchar_t*) {
    traced.fetch_add(1, std::memory_order_relaxed);
}
void traceTwo(const wchar_t*) {
    traced.fetch_add(1, std::memory_order_relaxed);
}

void hooksAndPositions(Random& random) {
    TqTracer::setTraceFunctionW(random() % 2 == 0 ? traceOne : traceTwo);
    TqTracer(L"%d items \u4E2D", static_cast<int>(random() % 10));
    wchar_t text[] = L"a;b;c";
    std::wstring parts;
    for (const wchar_t* part = _wcstok(text, L";"); part != nullptr; part = _wcstok(nullptr, L";"))
        parts += part;
    require(parts == L"abc", "the position of _wcstok");
    CMapStringToString map(10);
    map[L"key"] = L"a text too long to be kept in the string itself, of this thread";
    require(map[L"key"].empty(), "the string of the map that stores nothing");
}

void system(Random& random) {
    const std::wstring value = std::to_wstring(random() % 10);
    require(_wputenv((L"TQ_STRESS=" + value).c_str()) == 0, "_wputenv");
    wchar_t* const got = _wgetenv(L"TQ_STRESS");
    require(got != nullptr && std::wcslen(got) == 1 && *got >= L'0' && *got <= L'9', "_wgetenv");
    std::free(got);
    require(_waccess((folder + L"/BIGFONT.INI").c_str(), 4) == 0, "_waccess");
    const std::wstring name = folder + L"/text" + std::to_wstring(random() % 4);
    tq::openOutput(name)->writeBytes(reinterpret_cast<const unsigned char*>("0123"), 4);
    require(tq::openInput(name)->length() <= 4, "a file");
}

// A child has one thread: no lock may stay with another that it does not have.
void forks(Random& random) {
    if (random() % 16 != 0)
        return;
    const ::pid_t child = ::fork();
    if (child == 0) {
        ::alarm(30);
        LumoAppUnitSets settings;
        initOsBaseUnits(settings);
        ::kill(::getpid(), SIGKILL); // at an exit ThreadSanitizer would miss the parent's threads
    }
    int status = 0;
    require(::waitpid(child, &status, 0) == child && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL,
            "a child that takes the lock");
}

constexpr void (*kActions[])(Random&) = {vectors,   strings,           digits, unitSettings, exclusiveOpens,
                                         codePages, hooksAndPositions, system, forks};

void work(unsigned seed) {
    Random random(seed);
    for (int i = 0; i < 400; ++i)
        kActions[random() % std::size(kActions)](random);
}

} // namespace

int main(int argc, char** argv) {
    const unsigned rounds = argc > 1 ? static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10)) : 500;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 1;
    std::string made = "/tmp/shared_state_XXXXXX";
    require(::mkdtemp(made.data()) != nullptr, "a folder");
    folder = tq::wideName(made);
    for (const char* name : {"/exclusive0", "/exclusive1", "/exclusive2"})
        std::ofstream(made + name) << "file";
    std::ofstream(made + "/BIGFONT.INI") << "stress.shx;3\n";
    for (unsigned i = 0; i < rounds; ++i) {
        std::vector<std::thread> threads;
        for (unsigned j = 0; j < 2 + (seed + i) % 7; ++j)
            threads.emplace_back(work, (seed + i) * 8 + j);
        if (i % 2 == 0) // every other round the first thread takes part
            work((seed + i) * 8 + 7);
        for (std::thread& thread : threads)
            thread.join();
    }
    require(TqFileStreamBufImpl::m_cstrAlreadyOpenFiles.IsEmpty(), "no file stays registered");
    require(std::system(("rm -r " + made).c_str()) == 0, "removing the folder");
    std::printf("%u rounds, %u traces\n", rounds, traced.load());
}
