#include "platform/StaticInit.h"

#include <TqOsBase/codepage/TqCharCategory.h>

#include <algorithm>
#include <cstddef>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using Puncts = std::vector<wchar_t>;

// Among objects of the first priority this one precedes the library's own, which are linked after it.
struct EarlyReader {
    EarlyReader() : puncts(TqCharCategory::s_instance.allPuncts()) {}
    const Puncts puncts;
};
TQ_INIT_FIRST const EarlyReader g_earlyReader;

const std::wstring kLeft = L"([{\u3010\u300A\uFF08\uFFE5+\uFE35\u201A\u201E$\u2039\u00A3\u00A4\u00A5\u20AC\u2116\uFF04"
                           L"\uFFE1\uFFE5\uFF08\uFF3B\uFF5B\uFE59\uFE5B\uFE5D\uFE69\u3008";
const std::wstring kRight = L")]}\uFF09\u300B\u3011\uFF3D\uFF5D\uFE5A\uFE5C\uFE5E\u203A\u3009";
const std::wstring kNormal = L",?!.;:\u3001\u3002\u3003\uFF0C\uFF0E\uFF1A\uFF1B\uFF1F\uFF01\u2026-\uFE50\uFE51\uFE52"
                             L"\uFE54\uFE55\uFE56\uFE57%\u2030\u2025\u00B0/|\u00B0\u2010\u2013\u2014\u2032\u2033\u2035"
                             L"\u00A2\uFFE0\u2103\u2109\uFF05\uFF09\uFFE0\uFE6A";
const std::wstring kQuotation = L"\"\u2018\u2019\u201C\u201D'\u00AB\u00BB\u2039\u203A";

Puncts sorted(const std::wstring& text) {
    Puncts result(text.begin(), text.end());
    std::sort(result.begin(), result.end());
    return result;
}

void expectComplete(const TqCharCategory& category) {
    EXPECT_EQ(category.leftPuncts(), sorted(kLeft));
    EXPECT_EQ(category.rightPuncts(), sorted(kRight));
    EXPECT_EQ(category.normalPuncts(), sorted(kNormal));
    EXPECT_EQ(category.quotationPuncts(), sorted(kQuotation));
    EXPECT_EQ(category.allPuncts(), sorted(kLeft + kRight + kNormal + kQuotation));
}

TEST(TqCharCategory, HoldsSortedListsWithDuplicates) {
    EXPECT_EQ(g_earlyReader.puncts.size(), 97U);
    EXPECT_EQ(g_earlyReader.puncts, TqCharCategory::s_instance.allPuncts());
    expectComplete(TqCharCategory::s_instance);
    const TqCharCategory own;
    expectComplete(own);
    EXPECT_EQ(own.leftPuncts().front(), L'$');
    EXPECT_EQ(own.leftPuncts().size(), 29U);
    EXPECT_EQ(own.rightPuncts().size(), 13U);
    EXPECT_EQ(own.normalPuncts().size(), 45U);
    EXPECT_EQ(own.quotationPuncts().size(), 10U);
}

TEST(TqCharCategory, ListsAreWrittenAnewWhateverWasInThem) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{3}, std::size_t{200}}) {
        TqCharCategory category;
        const auto spoil = [size](const Puncts& list) { const_cast<Puncts&>(list).assign(size, L'x'); };
        spoil(category.leftPuncts());
        spoil(category.rightPuncts());
        spoil(category.normalPuncts());
        spoil(category.quotationPuncts());
        category.initLeftPuncts();
        category.initRightPuncts();
        category.initNormalPuncts();
        category.initQuotationPuncts();
        expectComplete(category);
        const_cast<Puncts&>(category.allPuncts()).assign(1, L'x');
        category.initLeftPuncts();
        EXPECT_EQ(category.allPuncts(), Puncts(1, L'x'));

        auto& shared = const_cast<wchar_t&>(TqCharCategory::s_instance.allPuncts().front());
        const wchar_t before = std::exchange(shared, L'x');
        const TqCharCategory taken = std::move(category);
        EXPECT_EQ(taken.rightPuncts(), sorted(kRight));
        EXPECT_TRUE(category.allPuncts().empty()) << "what was moved from holds nothing";
        EXPECT_EQ(std::exchange(shared, before), L'x') << "and writes nothing to the shared lists";
    }
}

} // namespace
