#include "reference/Testing.h"

namespace {

// What `print` writes to a standard output that has taken no text yet, neither narrow nor wide: a child's, because a
// stream keeps to what it has taken first.
std::string printedBy(const char* locale, const std::function<void()>& print) {
    const reference::TempFolder folder;
    const std::string path = folder.path("output");
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) {
        std::setlocale(LC_ALL, locale);
        if (std::freopen(path.c_str(), "w", stdout) == nullptr)
            std::_Exit(1);
        print();
        std::fflush(stdout);
        std::_Exit(0);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    std::ifstream output(path);
    return std::string(std::istreambuf_iterator<char>(output), {});
}

void traceInTurn() {
    TqTracer("a%d", 1);
    TqTracer(L"b\u00E9");
    TqTracer::defaultTraceA("c");
    TqAsserter::sm_pfnAssert(L"not printed", L"d.cpp", 12);
}

const std::string kTurns = "a1b\xC3\xA9"
                           "c\nTqAsserter failed-- d.cpp:12 ";

TEST(Tracing, NothingVanishesWhateverTheOutputHasTakenBefore) {
    const std::pair<std::function<void()>, std::string> rows[] = {
        {[] { TqTracer(L"%d items of %ls \u4E2D", 3, L"a"); }, "3 items of a \xE4\xB8\xAD"},
        {[] { traceInTurn(), std::printf("c"); }, kTurns + "c"}, // the program's own output goes on
        {[] { std::fwide(stdout, 1), traceInTurn(), std::wprintf(L"e"); }, kTurns + "e"},
        {[] { TqAsserter::sm_pfnAssert(L"", L"\u00E9.cpp", 12); }, "\nTqAsserter failed-- \xC3\xA9.cpp:12 "},
        {[] { TqAsserter::sm_pfnAssert(L"", nullptr, 12); }, "\nTqAsserter failed-- (null):12 "},
        {[] { TqTracer(L"%d%%%%", 100); }, "100%"}, // interpreted twice
        {[] { TqTracer::defaultTraceW(L"50%% \u00E9"); }, "50% \xC3\xA9"},
        {[] { TqTracer::defaultTraceA("50%%"); }, "50%"}};
    for (const auto& [print, text] : rows)
        for (const char* locale : {"C", reference::kUtf8Locale})
            EXPECT_EQ(printedBy(locale, print), text) << locale;
}

std::vector<std::wstring> g_wideTraces;
int g_narrowTraces = 0;

TEST(Tracing, HooksGetWhatTheWideConstructorFormats) {
    EXPECT_TRUE(TqTracer::sm_pfnTraceA == TqTracer::defaultTraceA && TqTracer::sm_pfnTraceW == TqTracer::defaultTraceW);
    TqTracer::setTraceFunctionA([](const char*) { ++g_narrowTraces; });
    TqTracer::setTraceFunctionW([](const wchar_t* text) { g_wideTraces.emplace_back(text); });

    EXPECT_EQ(printedBy("C", [] { TqTracer("narrow %d", 1); }), "narrow 1") << "asks no hook";
    TqTracer("%s", "");
    EXPECT_EQ(g_narrowTraces, 0);
    TqTracer(L"%d items", 3);
    TqTracer(L"");
    TqTracer(L"%2000d%ls", 7, L"\u00E9");
    EXPECT_EQ(g_wideTraces, (std::vector<std::wstring>{L"3 items", L"", std::wstring(1999, L' ') + L"7\u00E9"}));
    try {
        TqTracer(L"%600000d", 7);
        ADD_FAILURE() << "cannot be formatted";
    } catch (const wchar_t* text) {
        EXPECT_STREQ(text, L"Out of memory!!");
    }
    EXPECT_EQ(g_wideTraces.size(), 3U);

    TqTracer::setTraceFunctionA(nullptr);
    TqTracer::setTraceFunctionW(nullptr);
    EXPECT_FALSE(TqTracer::sm_pfnTraceA || TqTracer::sm_pfnTraceW);
    TqTracer::setTraceFunctionA(TqTracer::defaultTraceA);
    TqTracer::setTraceFunctionW(TqTracer::defaultTraceW);
}

} // namespace
