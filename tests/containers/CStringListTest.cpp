#include "reference/CountingNew.h"

#include <TqOsBase/containers/CStringList.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <list>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using counting_new::liveArrays;

using Model = std::list<std::wstring>;

constexpr const wchar_t* kLong = L"a text too long for the string's own small buffer";

// What the list holds, walked forwards; the walk backwards and the ends must agree.
std::vector<std::wstring> contents(const CStringList& list) {
    std::vector<std::wstring> forward;
    for (__POSITION* pos = list.GetHeadPosition(); pos != nullptr;)
        forward.push_back(list.GetNext(pos));
    std::vector<std::wstring> backward;
    for (__POSITION* pos = list.GetTailPosition(); pos != nullptr;)
        backward.insert(backward.begin(), list.GetPrev(pos));
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(list.GetCount(), static_cast<long long>(forward.size()));
    EXPECT_EQ(list.GetSize(), list.GetCount());
    EXPECT_EQ(list.IsEmpty(), forward.empty());
    return forward;
}

TEST(CStringList, BlocksComeOneAtATimeAndGoTogether) {
    const int before = liveArrays();
    CStringList list(10);
    EXPECT_EQ(liveArrays(), before);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 10; ++i)
            list.AddTail(kLong);
        EXPECT_EQ(liveArrays(), before + 1);
        list.RemoveHead();
        list.AddHead(L"recycled");
        EXPECT_EQ(liveArrays(), before + 1);
        list.AddTail(L"eleventh");
        EXPECT_EQ(liveArrays(), before + 2);
        while (list.GetCount() > 1)
            list.RemoveAt(list.GetTailPosition());
        EXPECT_EQ(liveArrays(), before + 2);
        list.RemoveTail();
        EXPECT_EQ(liveArrays(), before);
    }
    EXPECT_THROW(CStringList(0), std::invalid_argument);
    EXPECT_THROW(CStringList(-1), std::invalid_argument);
}

TEST(CPlex, RefusesWhatHasNoSize) {
    CPlex* chain = nullptr;
    EXPECT_EQ(CPlex::Create(chain, 0, 8), nullptr);
    EXPECT_EQ(CPlex::Create(chain, 8, 0), nullptr);
    EXPECT_THROW(CPlex::Create(chain, SIZE_MAX / 4, 8), std::bad_alloc);
    EXPECT_EQ(chain, nullptr);
    CPlex* first = CPlex::Create(chain, 3, 8);
    CPlex* second = CPlex::Create(chain, 1, 8);
    EXPECT_EQ(chain, second);
    EXPECT_EQ(second->pNext, first);
    EXPECT_EQ(first->data(), first + 1);
    chain->FreeDataChain();
}

TEST(CStringList, NoElementNoDereference) {
    CStringList list(2);
    __POSITION* none = nullptr;
    EXPECT_THROW(list.GetHead(), std::out_of_range);
    EXPECT_THROW(list.GetTail(), std::out_of_range);
    EXPECT_THROW(list.RemoveHead(), std::out_of_range);
    EXPECT_THROW(list.RemoveTail(), std::out_of_range);
    EXPECT_THROW(list.GetNext(none), std::out_of_range);
    EXPECT_THROW(list.GetPrev(none), std::out_of_range);
    EXPECT_THROW(list.GetAt(none), std::out_of_range);
    EXPECT_THROW(list.SetAt(none, L"x"), std::out_of_range);
    EXPECT_THROW(list.RemoveAt(none), std::out_of_range);
    EXPECT_EQ(list.FindIndex(0), nullptr);
    EXPECT_EQ(list.Find(L""), nullptr);
    list.AddTail(static_cast<CStringList*>(nullptr));
    list.AddTail(static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ(list.GetHead(), L"");
    EXPECT_EQ(list.Find(nullptr), list.GetHeadPosition());
    EXPECT_EQ(list.FindIndex(1), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);
}

TEST(CStringList, ListsAddEachOtherAndThemselvesInOrder) {
    CStringList ab(4);
    ab.AddTail(L"a");
    ab.AddTail(L"b");
    CStringList c(4);
    c.AddTail(L"c");
    c.AddHead(&ab);
    EXPECT_EQ(contents(c), (std::vector<std::wstring>{L"a", L"b", L"c"}));
    c.AddTail(&ab);
    EXPECT_EQ(contents(c), (std::vector<std::wstring>{L"a", L"b", L"c", L"a", L"b"}));
    ab.AddTail(&ab);
    EXPECT_EQ(contents(ab), (std::vector<std::wstring>{L"a", L"b", L"a", L"b"}));
    ab.RemoveTail();
    ab.AddHead(&ab);
    EXPECT_EQ(contents(ab), (std::vector<std::wstring>{L"a", L"b", L"a", L"a", L"b", L"a"}));
}

TEST(CStringList, ValuesMayLieInTheListItself) {
    CStringList list(1);
    __POSITION* pos = list.AddTail(kLong);
    list.AddHead(list.GetAt(pos));
    list.InsertAfter(pos, list.GetAt(pos).c_str() + 2);
    list.SetAt(pos, list.GetAt(pos).c_str() + 2);
    EXPECT_EQ(list.GetAt(pos), kLong + 2);
    list.SetAt(pos, list.GetAt(pos));
    EXPECT_EQ(contents(list), (std::vector<std::wstring>{kLong, kLong + 2, kLong + 2}));
    list.SetAt(pos, static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ(list.GetAt(pos), L"");
}

TEST(CStringList, BehavesLikeAListUnderRandomOperations) {
    std::mt19937 random(11);
    const int before = liveArrays();
    {
        CStringList list(7);
        Model model;
        for (int step = 0; step < 20000; ++step) {
            const std::wstring value = std::to_wstring(random() % 50) + (random() % 2 ? kLong : L"");
            const CStringList::String string(value);
            const auto index = static_cast<long long>(random() % (model.size() + 1));
            const auto at = std::next(model.begin(), index);
            __POSITION* pos = list.FindIndex(index);
            ASSERT_EQ(pos == nullptr, at == model.end());
            const bool exists = pos != nullptr;
            switch (random() % 9) {
            case 0:
                list.AddHead(value.c_str());
                model.push_front(value);
                break;
            case 1:
                list.AddTail(string);
                model.push_back(value);
                break;
            case 2:
                list.InsertBefore(pos, string);
                model.insert(exists ? at : model.begin(), value);
                break;
            case 3:
                list.InsertAfter(pos, value.c_str());
                model.insert(exists ? std::next(at) : model.end(), value);
                break;
            case 4:
                if (exists) {
                    list.SetAt(pos, string);
                    *at = value;
                }
                break;
            case 5: {
                __POSITION* found = list.Find(value.c_str(), pos);
                auto expected = std::find(exists ? std::next(at) : model.begin(), model.end(), value);
                ASSERT_EQ(found == nullptr, expected == model.end());
                if (found != nullptr) {
                    list.RemoveAt(found);
                    model.erase(expected);
                }
                break;
            }
            case 6:
                if (!model.empty()) {
                    ASSERT_EQ(list.RemoveHead(), model.front());
                    model.pop_front();
                }
                break;
            case 7:
                if (!model.empty()) {
                    ASSERT_EQ(list.RemoveTail(), model.back());
                    model.pop_back();
                }
                break;
            default:
                if (random() % 50 == 0) {
                    list.RemoveAll();
                    model.clear();
                }
            }
            if (step % 16 == 0) {
                ASSERT_EQ(contents(list), std::vector<std::wstring>(model.begin(), model.end())) << "step " << step;
            }
            if (model.empty()) {
                ASSERT_EQ(liveArrays(), before);
            }
        }
    }
    EXPECT_EQ(liveArrays(), before);
}

} // namespace
