#include "reference/CountingNew.h"

#include <TqOsBase/containers/CStringArray.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using counting_new::liveArrays;

using Model = std::vector<std::wstring>;

constexpr long long kMost = std::numeric_limits<long long>::max();
constexpr const wchar_t* kLong = L"a text too long for the string's own small buffer";

// The capacity is the third of the four 64-bit fields that make up the object.
long long capacityOf(const CStringArray& array) {
    std::int64_t fields[4];
    static_assert(sizeof fields == sizeof array);
    std::memcpy(fields, &array, sizeof fields);
    return fields[2];
}

Model contents(const CStringArray& array) {
    Model result;
    for (long long i = 0; i < array.GetSize(); ++i)
        result.push_back(array[i]);
    EXPECT_EQ(array.GetCount(), array.GetSize());
    EXPECT_EQ(array.IsEmpty(), result.empty());
    EXPECT_LE(array.GetSize(), capacityOf(array));
    return result;
}

CStringArray& filled(CStringArray& array, const Model& model) {
    array.RemoveAll();
    for (const std::wstring& text : model)
        array.Add(text.c_str());
    return array;
}

// Rules of growth, element by element.
TEST(CStringArray, GrowsByTheRules) {
    CStringArray array;
    long long expected = 0;
    for (long long size = 0; size < 20000; ++size) {
        ASSERT_EQ(array.Add(size % 2 == 0 ? L"x" : kLong), size);
        if (size + 1 > expected)
            expected = size == 0 ? 1 : expected + (size < 32 ? 4 : size < 8200 ? size / 8 : 1024);
        ASSERT_EQ(capacityOf(array), expected) << size;
    }
    for (long long i = 0; i < array.GetSize(); ++i)
        ASSERT_EQ(array[i], i % 2 == 0 ? L"x" : kLong);

    const struct {
        long long size;
        long long growBy;
        long long capacity;
    } steps[] = {{0, 100, 0},  {7, -1, 7},     {8, -1, 107}, {0, -1, 0},    {2, -1, 2},
                 {3, -5, 102}, {500, -1, 500}, {20, 0, 500}, {501, -1, 504}};
    for (const auto& step : steps) {
        array.SetSize(step.size, step.growBy);
        EXPECT_EQ(capacityOf(array), step.capacity) << step.size;
    }
}

TEST(CStringArray, EmptyArraysHoldNothing) {
    const int before = liveArrays();
    CStringArray array;
    array.FreeExtra();
    array.SetSize(5);
    EXPECT_EQ(liveArrays(), before + 1);
    array.RemoveAt(0, 5);
    EXPECT_EQ(capacityOf(array), 5);
    array.FreeExtra();
    EXPECT_EQ(liveArrays(), before);
    EXPECT_EQ(capacityOf(array), 0);
    array.SetSize(5);
    array.SetSize(0);
    EXPECT_EQ(liveArrays(), before);
    array.SetSize(5);
    array.RemoveAt(0, 5);
    EXPECT_EQ(array.Append(CStringArray()), 0);
    EXPECT_EQ(liveArrays(), before);
    array.SetAtGrow(3, L"far");
    EXPECT_EQ(contents(array), (Model{L"", L"", L"", L"far"}));
}

TEST(CStringArray, ValuesMayLieInTheArrayItself) {
    CStringArray array;
    const auto full = [&array]() -> CStringArray& {
        filled(array, {kLong, L"b"}).FreeExtra();
        return array;
    };
    full().Add(array[0]);
    EXPECT_EQ(contents(array), (Model{kLong, L"b", kLong}));
    full().Add(array[0].c_str() + 2);
    EXPECT_EQ(contents(array), (Model{kLong, L"b", kLong + 2}));
    full().SetAtGrow(3, array[0]);
    array.SetAt(0, array[0].c_str() + 2);
    EXPECT_EQ(contents(array), (Model{kLong + 2, L"b", L"", kLong}));
    full().InsertAt(0, array[1], 2);
    array.InsertAt(1, array[2].c_str());
    EXPECT_EQ(contents(array), (Model{L"b", kLong, L"b", kLong, L"b"}));
    full().InsertAt(1, &array);
    EXPECT_EQ(array.Append(array), 4);
    EXPECT_EQ(contents(array), (Model{kLong, kLong, L"b", L"b", kLong, kLong, L"b", L"b"}));
    array.Copy(array);
    EXPECT_EQ(array.GetSize(), 8);
    array.SetAt(0, static_cast<const wchar_t*>(nullptr));
    array.Add(static_cast<const wchar_t*>(nullptr));
    array.InsertAt(9, static_cast<const CStringArray*>(nullptr));
    EXPECT_EQ(array[0], L"");
    EXPECT_EQ(array[8], L"");
    EXPECT_EQ(array.GetSize(), 9);
}

TEST(CStringArray, BadCountsAndIndicesChangeNothing) {
    const int before = liveArrays();
    {
        CStringArray array;
        const Model model{L"a", kLong};
        filled(array, model);
        EXPECT_THROW(array.SetSize(-1), std::length_error);
        EXPECT_THROW(array.InsertEmpty(0, -1), std::length_error);
        EXPECT_THROW(array.InsertAt(0, L"x", -1), std::length_error);
        EXPECT_THROW(array.RemoveAt(0, -1), std::length_error);
        EXPECT_THROW(array.SetAtGrow(-1, L"x"), std::out_of_range);
        EXPECT_THROW(array.InsertEmpty(-1, 1), std::out_of_range);
        EXPECT_THROW(array.InsertAt(-1, &array), std::out_of_range);
        EXPECT_THROW(array.RemoveAt(-1), std::out_of_range);
        EXPECT_THROW(array.RemoveAt(2), std::out_of_range);
        EXPECT_THROW(array.RemoveAt(1, 2), std::out_of_range);
        EXPECT_THROW(array.RemoveAt(1, kMost), std::out_of_range);
        EXPECT_THROW(array.SetSize(kMost), std::bad_alloc);
        EXPECT_THROW(array.SetAtGrow(kMost, L"x"), std::bad_alloc);
        EXPECT_THROW(array.InsertEmpty(1, kMost), std::bad_alloc);
        EXPECT_THROW(array.InsertEmpty(kMost, kMost), std::bad_alloc);
        array.RemoveAt(2, 0);
        array.SetSize(2, kMost);
        array.SetSize(5);
        EXPECT_THROW(array.SetSize(6), std::bad_alloc);
        array.SetSize(2, 0);
        EXPECT_EQ(contents(array), model);
    }
    EXPECT_EQ(liveArrays(), before);
}

TEST(CStringArray, BehavesLikeAVectorUnderRandomOperations) {
    std::mt19937 random(13);
    const int before = liveArrays();
    {
        CStringArray array;
        CStringArray other;
        const Model otherModel{L"1", kLong, L"3"};
        filled(other, otherModel);
        Model model;
        for (int step = 0; step < 20000; ++step) {
            const std::wstring value = std::to_wstring(random() % 50) + (random() % 2 != 0 ? kLong : L"");
            const CStringArray::String string(value);
            const std::size_t at = random() % (model.size() + 3);
            const std::size_t count = random() % 4;
            const auto index = static_cast<long long>(at);
            const std::size_t end = std::max(at, model.size());
            const auto gap = [&model, at, end](std::size_t length, const std::wstring& text) {
                model.resize(end);
                model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), length, text);
            };
            switch (random() % 9) {
            case 0:
                ASSERT_EQ(array.Add(string), static_cast<long long>(model.size()));
                model.push_back(value);
                break;
            case 1:
                array.SetAtGrow(index, value.c_str());
                model.resize(std::max(at + 1, model.size()));
                model[at] = value;
                break;
            case 2:
                array.InsertEmpty(index, static_cast<long long>(count));
                gap(count, L"");
                break;
            case 3:
                array.InsertAt(index, string, static_cast<long long>(count));
                gap(count, value);
                break;
            case 4:
                array.InsertAt(index, &other);
                gap(0, L"");
                model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), otherModel.begin(), otherModel.end());
                break;
            case 5:
            case 6: {
                const std::size_t first = std::min(at, model.size());
                const std::size_t removed = std::min(count + 1, model.size() - first);
                array.RemoveAt(static_cast<long long>(first), static_cast<long long>(removed));
                const auto begin = model.begin() + static_cast<std::ptrdiff_t>(first);
                model.erase(begin, begin + static_cast<std::ptrdiff_t>(removed));
                break;
            }
            case 7:
                array.SetSize(index);
                model.resize(at);
                break;
            default:
                if (random() % 20 == 0) {
                    array.Copy(other);
                    model = otherModel;
                } else if (random() % 2 == 0) {
                    ASSERT_EQ(array.Append(other), static_cast<long long>(model.size()));
                    model.insert(model.end(), otherModel.begin(), otherModel.end());
                } else {
                    array.FreeExtra();
                    ASSERT_EQ(capacityOf(array), array.GetSize());
                }
            }
            ASSERT_EQ(contents(array), model) << "step " << step;
        }
    }
    EXPECT_EQ(liveArrays(), before);
}

#if !defined(NDEBUG)
TEST(CStringArrayDeathTest, AccessIsAsserted) {
    CStringArray array;
    array.Add(L"a");
    EXPECT_DEATH(static_cast<void>(array.GetAt(1)), "index");
    EXPECT_DEATH(array.SetAt(-1, L"b"), "index");
}
#endif

} // namespace
