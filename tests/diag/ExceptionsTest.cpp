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
        EXPECT_STREQ(copy.description(), L"worn-out pen");
        EXPECT_NE(copy.m_pszMessage, original.m_pszMessage);
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
    const struct {
        int status;
        const wchar_t* message;
        std::wstring expected;
    } rows[] = {{364, nullptr, prefix},
                {INT_MIN, L"\u00E9", L"error type: -2147483648\tmessage:\u00E9"},
                {364, fits.c_str(), prefix + fits},
                {364, longText.c_str(), (prefix + longText).substr(0, 511)}};
    for (const auto& row : rows) {
        TqErrorStatus error(static_cast<Lumo::ErrorStatus>(row.status), row.message, L"f", 3);
        const wchar_t* first = error.description();
        EXPECT_EQ(first, row.expected);
        error.m_pszMessage = L"changed later";
        EXPECT_EQ(error.description(), first);
        EXPECT_EQ(error.errorType(), row.status);
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
            EXPECT_NE(copy.m_pszDescription, original.m_pszDescription);
            EXPECT_STREQ(copy.m_pszFile, L"file");
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

} // namespace
