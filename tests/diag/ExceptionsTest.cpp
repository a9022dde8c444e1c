#include <TqOsBase/diag/Exceptions.h>

#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <typeinfo>

static_assert(std::is_same_v<std::underlying_type_t<Lumo::ErrorStatus>, int>);

namespace {

constexpr auto kStatus = static_cast<Lumo::ErrorStatus>(364);

TEST(TqException, CarriesTheReasonAndDescribesItselfByName) {
    const wchar_t* reason = L"Out of stream buffer!";
    try {
        throw TqException(reason);
    } catch (const TqException& e) {
        EXPECT_EQ(e.m_pszFile, reason);
        EXPECT_STREQ(e.description(), L"TqException");
        EXPECT_EQ(e.m_pInner, nullptr);
        EXPECT_FALSE(e.m_flag);
        EXPECT_EQ(e.m_nLine, 0);
        EXPECT_EQ(e.code(), 0);
    }
}

TEST(TqExceptionWithMsg, OwnsItsMessageThroughCopies) {
    std::wstring message = L"worn-out pen";
    TqException inner;
    TqExceptionWithMsg original(L"file.cpp", 12, message.c_str(), &inner);
    original.m_flag = true;
    message.assign(message.size(), L'?');
    EXPECT_STREQ(original.description(), L"worn-out pen");

    TqExceptionWithMsg assigned(L"", 0, nullptr);
    EXPECT_STREQ(assigned.description(), L"") << "null is taken as empty";
    assigned = original;
    const TqExceptionWithMsg& self = assigned;
    assigned = self;
    for (const TqExceptionWithMsg& copy : {TqExceptionWithMsg(original), assigned}) {
        EXPECT_STREQ(copy.description(), L"worn-out pen");
        EXPECT_NE(copy.m_pszMessage, original.m_pszMessage);
        EXPECT_EQ(copy.m_pInner, &inner);
        EXPECT_TRUE(copy.m_flag);
        EXPECT_STREQ(copy.m_pszFile, L"file.cpp");
        EXPECT_EQ(copy.m_nLine, 12);
        EXPECT_EQ(copy.code(), 0);
    }
}

TEST(TqErrorStatus, DescriptionIsBuiltOnceAndBounded) {
    struct Row {
        int status;
        const wchar_t* message;
        std::wstring expected;
    };
    const std::wstring longText(600, L'\u4E2D');
    const std::wstring fits(511 - std::wcslen(L"error type: 364\tmessage:"), L'x');
    const Row rows[] = {
        {364, L"x", L"error type: 364\tmessage:x"},
        {364, L"", L"error type: 364\tmessage:"},
        {364, nullptr, L"error type: 364\tmessage:"},
        {INT_MIN, L"\u00E9", L"error type: -2147483648\tmessage:\u00E9"},
        {364, fits.c_str(), L"error type: 364\tmessage:" + fits},
        {364, longText.c_str(), (L"error type: 364\tmessage:" + longText).substr(0, 511)},
    };
    for (const Row& row : rows) {
        TqErrorStatus error(static_cast<Lumo::ErrorStatus>(row.status), row.message, L"f", 3);
        const wchar_t* first = error.description();
        EXPECT_EQ(first, row.expected);
        error.m_pszMessage = L"changed later";
        EXPECT_EQ(error.description(), first);
        EXPECT_EQ(error.errorType(), row.status);
    }
    EXPECT_STREQ(TqErrorStatus(kStatus).description(), L"error type: 364\tmessage:");
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
        assigned.description();
        assigned = original;
        for (const TqErrorStatus* copy : {&assigned, new TqErrorStatus(original)}) {
            EXPECT_EQ(copy->m_pInner, nullptr);
            EXPECT_TRUE(copy->m_flag);
            EXPECT_EQ(copy->m_pszDescription != nullptr, built);
            EXPECT_STREQ(copy->description(), L"error type: 364\tmessage:message");
            EXPECT_NE(copy->m_pszDescription, original.m_pszDescription);
            EXPECT_STREQ(copy->m_pszFile, L"file");
            EXPECT_EQ(copy->m_nLine, 7);
            if (copy != &assigned)
                delete copy;
        }
    }
    const TqErrorStatus located(kStatus, L"file", 9);
    EXPECT_STREQ(located.m_pszMessage, L"");
    EXPECT_STREQ(located.m_pszFile, L"file");
    EXPECT_EQ(located.m_nLine, 9);
    EXPECT_STREQ(TqErrorStatus(kStatus).m_pszFile, L"");
}

} // namespace
