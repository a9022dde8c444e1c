// The collections in range-based for and in algorithms, and filled from lists in braces.

#include "reference/Testing.h"

#include <TqOsBase/containers/Range.h>

#include <iterator>

namespace {

template <class Collection>
std::wstring joined(const Collection& collection) {
    std::wstring text;
    for (const auto& element : collection)
        text += element;
    return text;
}

TEST(Range, ElementsInOrder) {
    TqVector<wchar_t> vector;
    EXPECT_TRUE(begin(vector) == end(vector) && begin(std::as_const(vector)) == end(std::as_const(vector)));
    tq::append(vector, {L'c', L'a', L'b'});
    const TqVector<wchar_t> shared = vector;
    std::sort(begin(vector), end(vector));
    EXPECT_EQ(joined(vector) + joined(shared), L"abccab") << "writing takes storage of its own";
    CStringArray array;
    tq::append(array, {L"x", nullptr, L"yz"});
    EXPECT_EQ(joined(array), L"xyz");
    std::reverse(begin(array), end(array));
    CStringList list(2);
    EXPECT_TRUE(begin(list) == end(list));
    tq::append(list, {L"p", L"", L"qr"});
    for (auto& text : list)
        text += L";";
    EXPECT_EQ(joined(array) + joined(list), L"yzxp;;qr;");
    EXPECT_EQ(std::count(begin(std::as_const(list)), end(std::as_const(list)), L";"), 1);
}

TEST(Range, EntriesOfAMap) {
    CMapStringToPtr map(4);
    EXPECT_TRUE(begin(map) == end(map));
    tq::append(map, {{L"one", &map}, {L"two", nullptr}});
    std::wstring keys;
    for (const auto& [key, value] : map) {
        keys += key + (value == &map ? L"=map;" : L"=null;");
        EXPECT_TRUE(map.RemoveKey(key.c_str())) << "the entry at hand may go";
    }
    EXPECT_TRUE(keys == L"one=map;two=null;" || keys == L"two=null;one=map;") << keys.size();
    EXPECT_TRUE(map.IsEmpty());
}

} // namespace
