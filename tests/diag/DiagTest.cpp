#include "reference/Testing.h"

namespace {

constexpr auto kStatus = static_cast<Lumo::ErrorStatus>(364);

TEST(TqExceptionWithMsg, OwnsItsMessageThroughCopies) {
    std::wstring message = L"worn-out pen";
    TqException inner;
    TqExceptionWithMsg original(L"file.cpp", 12, message.c_str(), &inner);
    original.m_flag = true;
    message.assign(message.size(), L'?');
    TqExceptionWithMsg assigned(L"", 0, nullptr);
    EXPECT_STREQ(assigned.description(), L"") << "null is taken as empty";
    assigned = original;
    const TqExceptionWithMsg& self = assigned;
    assigned = self;
    for (const TqExceptionWithMsg& copy : {TqExceptionWithMsg(original), assigned}) {
        EXPECT_TRUE(copy.description() == std::wstring(L"worn-out pen") && copy.m_pszMessage != original.m_pszMessage);
        EXPECT_TRUE(copy.m_pInner == &inner && copy.m_flag && copy.m_nLine == 12 && copy.code() == 0);
        EXPECT_STREQ(copy.m_pszFile, L"file.cpp");
    }
    EXPECT_STREQ(inner.description(), L"TqException");
}

TEST(TqErrorStatus, NumbersAndDescriptionsThatAreBuiltOnceAndBounded) {
    EXPECT_EQ((std::vector<int>{Lumo::kOk, Lumo::kInvalidDisposition, Lumo::kFileOpenFailed, Lumo::kFileNotAccessible,
                                Lumo::kInvalidFileTarget, Lumo::kEmptyPath, Lumo::kFileLockedByProcess}),
              (std::vector<int>{0, 2, 53, 72, 364, 365, 433}));
    const std::wstring prefix = L"error type: 364\tmessage:";
    const std::wstring longText(600, L'\u4E2D');
    const std::wstring fits(511 - prefix.size(), L'x');
    const std::tuple<int, const wchar_t*, std::wstring> rows[] = {
        {364, nullptr, prefix},
        {INT_MIN, L"\u00E9", L"error type: -2147483648\tmessage:\u00E9"},
        {364, fits.c_str(), prefix + fits},
        {364, longText.c_str(), (prefix + longText).substr(0, 511)}};
    for (const auto& [status, message, expected] : rows) {
        TqErrorStatus error(static_cast<Lumo::ErrorStatus>(status), message, L"f", 3);
        const wchar_t* first = error.description();
        EXPECT_EQ(first, expected);
        error.m_pszMessage = L"changed later";
        EXPECT_TRUE(error.description() == first && error.errorType() == status);
    }
    EXPECT_EQ(TqErrorStatus(kStatus).m_pszFile + prefix, TqErrorStatus(kStatus).description());
}

TEST(TqErrorStatus, CopiesDropTheInnerExceptionAndDuplicateABuiltDescription) {
    TqException inner;
    for (const bool built : {false, true}) {
        TqErrorStatus original(kStatus, L"message", L"file", 7);
        original.m_pInner = &inner;
        original.m_flag = true;
        if (built)
            original.description();
        TqErrorStatus assigned(Lumo::kOk, L"elsewhere", 1);
        EXPECT_EQ(assigned.m_pszMessage + std::wstring(assigned.m_pszFile), L"elsewhere");
        assigned.description();
        assigned = original;
        for (const TqErrorStatus& copy : {TqErrorStatus(original), assigned}) {
            EXPECT_TRUE(copy.m_pInner == nullptr && copy.m_flag && copy.m_nLine == 7);
            EXPECT_EQ(copy.m_pszDescription != nullptr, built);
            EXPECT_STREQ(copy.description(), L"error type: 364\tmessage:message");
            EXPECT_TRUE(copy.m_pszDescription != original.m_pszDescription && copy.m_pszFile == std::wstring(L"file"));
        }
    }
}

TEST(TqLocker, TakesALockThatItsOwnerDeletesAndThatNeverBlocks) {
    const std::unique_ptr<TqLock> owned(TqLocker().m_pLock);
    owned->unlock();
    owned->lock();
    owned->lock();
    EXPECT_NE(dynamic_cast<TqImpLock_mac*>(owned.get()), nullptr);
}

// What `print` writes to a child's standard output: one that has taken no text yet, neither narrow nor wide.
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
