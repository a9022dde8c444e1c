// Summarises the log of a plot server. It was written for Windows, in the way of such programs, and is unchanged but
// for the two headers of this library and main() at its end: their names make it compile, and do here what they do
// there. The porting report and the compiler's warnings name the calls whose results differ (docs/porting.md).

#include <TqOsBase/TqOsBase.h>
#include <TqOsBase/porting/WindowsNames.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

namespace {

const char* const kLevels[] = {"DEBUG", "INFO", "WARN", "ERROR", "FATAL"};
constexpr int kNoLevel = -1;
constexpr int kMaxSources = 16;

struct Source {
    char name[12];
    unsigned count[_countof(kLevels)];
    LONGLONG bytes;
    DWORD milliseconds;
};

struct Summary {
    Source sources[kMaxSources];
    int sourceCount;
    unsigned lines;
    unsigned skipped;
    wchar_t* worst; // text of the first entry of the highest level; released with free()
    int worstLevel;
};

// Prints a message with the reason of the last error.
void complain(const wchar_t* what, const wchar_t* name, errno_t error) {
    char message[2 * MAX_PATH];
    if (_snprintf_s(message, _TRUNCATE, "%S %S: %s\n", what, name, std::strerror(error)) < 0)
        strcpy_s(message, "an error with a very long name\n");
    std::fputs(message, stderr);
}

int levelOf(const char* text) {
    for (int level = 0; level < static_cast<int>(_countof(kLevels)); ++level)
        if (_stricmp(text, kLevels[level]) == 0)
            return level;
    return kNoLevel;
}

// The source of that name, a new one when there is room; its name is cut where it is long.
Source* sourceOf(Summary& summary, const char* name) {
    char key[sizeof(Source::name)];
    if (strncpy_s(key, name, _TRUNCATE) == STRUNCATE)
        key[_countof(key) - 2] = '~';
    for (int i = 0; i < summary.sourceCount; ++i)
        if (_stricmp(summary.sources[i].name, key) == 0)
            return &summary.sources[i];
    if (summary.sourceCount == kMaxSources)
        return nullptr;
    Source* source = &summary.sources[summary.sourceCount++];
    ZeroMemory(source, sizeof *source);
    strcpy_s(source->name, key);
    return source;
}

// "bytes=123" and "ms=4" add to the source; other words are text.
void addNumbers(Source& source, char* words) {
    char* context = nullptr;
    for (char* word = strtok_s(words, " ", &context); word != nullptr; word = strtok_s(nullptr, " ", &context)) {
        if (_strnicmp(word, "bytes=", 6) == 0)
            source.bytes += std::strtoll(word + 6, nullptr, 10);
        else if (_strnicmp(word, "ms=", 3) == 0)
            source.milliseconds += static_cast<DWORD>(std::strtoul(word + 3, nullptr, 10));
    }
}

void keepWorst(Summary& summary, int level, const Source& source, const char* text) {
    if (level <= summary.worstLevel)
        return;
    wchar_t entry[128];
    if (_snwprintf_s(entry, _TRUNCATE, L"%S: %hs", source.name, text) < 0)
        wmemcpy(entry + _countof(entry) - 4, L"...", 3);
    std::free(summary.worst);
    summary.worst = _wcsdup(entry);
    summary.worstLevel = level;
}

// Date, time, level and source, then text to the end of the line.
BOOL addLine(Summary& summary, char* line) {
    char* context = nullptr;
    const char* date = strtok_s(line, " ", &context);
    const char* time = strtok_s(nullptr, " ", &context);
    const char* levelName = strtok_s(nullptr, " ", &context);
    const char* sourceName = strtok_s(nullptr, " ", &context);
    if (date == nullptr || time == nullptr || levelName == nullptr || sourceName == nullptr)
        return FALSE;
    const int level = levelOf(levelName);
    Source* source = level != kNoLevel ? sourceOf(summary, sourceName) : nullptr;
    if (source == nullptr)
        return FALSE;
    ++source->count[level];
    char* text = context;
    while (*text == ' ')
        ++text;
    keepWorst(summary, level, *source, text);
    addNumbers(*source, text);
    return TRUE;
}

BOOL readLog(const wchar_t* name, Summary& summary) {
    if (const errno_t error = _waccess_s(name, 4); error != 0) {
        complain(L"cannot read", name, error);
        return FALSE;
    }
    std::FILE* file = nullptr;
    _wfopen_s(&file, name, L"rb");
    if (file == nullptr) {
        complain(L"cannot open", name, errno);
        return FALSE;
    }
    _fseeki64(file, 0, SEEK_END);
    const LONGLONG size = _ftelli64(file);
    _fseeki64(file, 0, SEEK_SET);
    struct __stat64 status;
    if (_wstat64(name, &status) == 0 && status.st_size != size)
        OutputDebugStringA("the log is being written: read as far as it was\n");

    char line[1024];
    while (_ftelli64(file) < size && std::fgets(line, sizeof line, file) != nullptr) {
        line[std::strcspn(line, "\r\n")] = '\0';
        if (line[0] == ';' || line[0] == '\0')
            continue;
        ++summary.lines;
        if (!addLine(summary, line))
            ++summary.skipped;
    }
    std::fclose(file);
    return TRUE;
}

// Levels from a list such as L"warn,error", as bits; 0 when one of them is unknown.
unsigned levelsOf(const wchar_t* list) {
    wchar_t* copy = _wcsdup(list);
    unsigned levels = 0;
    BOOL isKnown = TRUE;
    wchar_t* context = nullptr;
    for (wchar_t* word = wcstok_s(copy, L",", &context); word != nullptr; word = wcstok_s(nullptr, L",", &context)) {
        BOOL isFound = FALSE;
        for (unsigned level = 0; level < _countof(kLevels); ++level) {
            wchar_t name[8];
            swprintf_s(name, L"%S", kLevels[level]);
            if (_wcsicmp(word, name) == 0) {
                levels |= 1U << level;
                isFound = TRUE;
            }
        }
        isKnown = isKnown && isFound;
    }
    std::free(copy);
    return isKnown ? levels : 0;
}

// A line of the table: the counts of the chosen levels, then the sums.
void formatSource(wchar_t (&line)[128], const Source& source, unsigned levels) {
    swprintf_s(line, L"%-12S", source.name);
    for (unsigned level = 0; level < _countof(kLevels); ++level) {
        if ((levels & 1U << level) == 0)
            continue;
        wchar_t number[16];
        swprintf_s(number, L"%7u", source.count[level]);
        wcscat_s(line, number);
    }
    wchar_t sums[64];
    swprintf_s(sums, L"%16I64d%9u.%03u s", source.bytes, source.milliseconds / 1000, source.milliseconds % 1000);
    wcsncat_s(line, sums, _TRUNCATE);
}

void formatHeading(wchar_t (&line)[128], unsigned levels) {
    swprintf_s(line, L"%-12s", L"source");
    for (unsigned level = 0; level < _countof(kLevels); ++level) {
        wchar_t name[16];
        swprintf_s(name, L"%7hs", kLevels[level]);
        if ((levels & 1U << level) != 0)
            wcscat_s(line, name);
    }
    wcscat_s(line, L"           bytes        time");
}

// The report as narrow text: measured, then written in one piece.
std::string reportOf(const Summary& summary, unsigned levels) {
    std::string report;
    const auto add = [&report](const wchar_t* line) {
        const int length = _scprintf("%S\n", line);
        if (length < 0)
            return;
        std::vector<char> text(static_cast<std::size_t>(length) + 1);
        sprintf_s(text.data(), text.size(), "%S\n", line);
        report += text.data();
    };
    wchar_t line[128];
    formatHeading(line, levels);
    add(line);
    for (int i = 0; i < summary.sourceCount; ++i) {
        formatSource(line, summary.sources[i], levels);
        add(line);
    }
    swprintf_s(line, L"%u lines, %I32u skipped", summary.lines, summary.skipped);
    add(line);
    if (summary.worst != nullptr) {
        std::vector<wchar_t> worst(static_cast<std::size_t>(_scwprintf(L"worst: %s", summary.worst)) + 1);
        swprintf_s(worst.data(), worst.size(), L"worst: %s", summary.worst);
        add(worst.data());
    }
    return report;
}

// The reports lie in a folder of their own, one for each log; that of an earlier run goes first.
BOOL writeReport(const wchar_t* folder, const std::string& report) {
    if (_wmkdir(folder) != 0 && errno != EEXIST) {
        complain(L"cannot make", folder, errno);
        return FALSE;
    }
    wchar_t path[MAX_PATH];
    if (_snwprintf_s(path, _TRUNCATE, L"%s/summary.txt", folder) < 0) {
        complain(L"the name is too long:", folder, ENAMETOOLONG);
        return FALSE;
    }
    if (_waccess_s(path, 0) == 0 && _wunlink(path) != 0) {
        complain(L"cannot remove", path, errno);
        return FALSE;
    }
    std::FILE* file = nullptr;
    _wfopen_s(&file, path, L"wb");
    if (file == nullptr) {
        complain(L"cannot write", path, errno);
        return FALSE;
    }
    const BOOL isWritten = std::fwrite(report.data(), 1, report.size(), file) == report.size();
    const BOOL isClosed = std::fclose(file) == 0;
    struct __stat64 status;
    if (isWritten && isClosed && _wstat64(path, &status) == 0 && (status.st_mode & _S_IFREG) != 0) {
        char message[64];
        sprintf_s(message, "report of %I64d bytes, 100%% of it on the disk\n", static_cast<LONGLONG>(status.st_size));
        OutputDebugStringA(message);
    }
    return isWritten && isClosed;
}

int wmain(int argc, wchar_t** argv) {
    if (argc < 3 || argc > 4) {
        std::fputs("usage: ported_log_summary LOG FOLDER [LEVELS]\n", stderr);
        return 2;
    }
    const unsigned levels = levelsOf(argc == 4 ? argv[3] : L"info,warn,error,fatal");
    if (levels == 0) {
        complain(L"unknown level in", argv[3], EINVAL);
        return 2;
    }
    LARGE_INTEGER frequency;
    LARGE_INTEGER start;
    LARGE_INTEGER end;
    const ULONGLONG ticks = GetTickCount64();
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&start);

    Summary summary;
    ZeroMemory(&summary, sizeof summary);
    summary.worstLevel = kNoLevel;
    BOOL isDone = readLog(argv[1], summary);
    if (isDone) {
        const std::string report = reportOf(summary, levels);
        std::fputs(report.c_str(), stdout);
        isDone = writeReport(argv[2], report);
    }
    std::free(summary.worst);

    Sleep(0);
    QueryPerformanceCounter(&end);
    const LONGLONG microseconds = (end.QuadPart - start.QuadPart) * 1000000 / frequency.QuadPart;
    if (microseconds < 0 || microseconds > 60000000 || GetTickCount64() - ticks > 60000)
        OutputDebugStringW(L"that took more than a minute\n");
    return isDone ? 0 : 1;
}

} // namespace

// What Windows does before wmain: the arguments become wide.
int main(int argc, char** argv) {
    try {
        std::vector<std::wstring> arguments(static_cast<std::size_t>(argc));
        std::vector<wchar_t*> pointers(arguments.size());
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            arguments[i] = tq::wideName(argv[i]);
            pointers[i] = arguments[i].data();
        }
        return wmain(argc, pointers.data());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
