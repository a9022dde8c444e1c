#include "faults/FailingCalls.h"
#include "reference/CountingNew.h"

#include <TqOsBase/TqOsBase.h>

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using String = CStdStr<wchar_t>;
using faults::runsOut;
using faults::sweepAllocations;

// Longer than what a string keeps within itself.
const wchar_t* const kLong = L"a text that needs a block of its own, whatever the library";
const wchar_t* const kOther = L"another text that needs a block of its own";

template <class Subject>
struct Row {
    const char* name;
    std::function<void(Subject&)> change;
};

// Every change with every one of its allocations failing: the contents stay, nothing is leaked, and the same change
// then succeeds. `fill` prepares the subject and gives what must live beside it, `seen` what is compared.
template <class Subject, class Fill, class Seen, class... Arguments>
void expectAllOrNothing(const std::vector<Row<Subject>>& rows, const Fill& fill, const Seen& seen,
                        const Arguments&... arguments) {
    for (const Row<Subject>& row : rows) {
        SCOPED_TRACE(row.name);
        if (testing::Test::HasFailure())
            return;
        EXPECT_GT(sweepAllocations([&](int failing) {
                      Subject subject(arguments...);
                      [[maybe_unused]] const auto others = fill(subject);
                      const auto before = seen(subject);
                      const bool ranOut = runsOut(failing, [&] { row.change(subject); });
                      if (ranOut) {
                          EXPECT_EQ(seen(subject), before) << "allocation " << failing;
                          row.change(subject); // and it can be used on
                      }
                      return !ranOut;
                  }),
                  0);
    }
}

template <class Collection>
std::vector<std::wstring> textsOf(const Collection& collection) {
    std::vector<std::wstring> texts;
    if constexpr (std::is_same_v<Collection, CStringList>) {
        for (__POSITION* pos = collection.GetHeadPosition(); pos != nullptr;)
            texts.push_back(collection.GetNext(pos));
    } else {
        for (long long i = 0; i < collection.GetSize(); ++i)
            texts.push_back(collection[i]);
    }
    return texts;
}

template <class Vector>
void expectVectorAllOrNothing(const std::vector<Row<Vector>>& more = {}) {
    std::vector<Row<Vector>> rows = {
        {"append", [](Vector& v) { v.append({}); }},
        {"longer", [](Vector& v) { v.setLogicalLength(v.logicalLength() + 100); }},
        {"shorter, shared", [](Vector& v) { v.setLogicalLength(1); }},
        {"slots", [](Vector& v) { v.setPhysicalLength(v.physicalLength() + 1); }},
        {"element", [](Vector& v) { v[0] = {}; }},
        {"array", [](Vector& v) { v.asArrayPtr()[0] = {}; }},
        {"last", [](Vector& v) { *v.last() = {}; }},
        {"a new one", [](Vector&) { Vector(20, 3).append({}); }},
    };
    rows.insert(rows.end(), more.begin(), more.end());
    const auto fill = [](Vector& v) {
        for (int i = 0; i < 8; ++i)
            v.append(static_cast<std::remove_reference_t<decltype(v[0])>>('a' + i));
        return v; // shares the record
    };
    const auto seen = [](const Vector& v) {
        std::vector<int> values{v.logicalLength(), v.physicalLength(), v.growLength()};
        for (int i = 0; i < v.logicalLength(); ++i)
            values.push_back(static_cast<int>(v[i]));
        return values;
    };
    // The record first shared, then not: those that only unshare have nothing to fail then.
    expectAllOrNothing<Vector>(rows, fill, seen);
    rows.resize(2);
    expectAllOrNothing<Vector>(
        rows, [&](Vector& v) { return fill(v).isEmpty(); }, seen);
}

TEST(ContainerFaults, Vectors) {
    expectVectorAllOrNothing<TqVector<wchar_t>>({
        {"to wide", [](auto& v) { TqCharMapper::multiByteToWideChar(kCodePageWestern, "A\\U+00E9", 8, v); }},
        {"UTF-8 to wide", [](auto& v) { TqCharMapper::utf8ToUnicode("\xC3\xA9 and a long one after it", 25, v); }},
        {"UTF-8 character", [](auto& v) { TqCharMapper::multiByteToWideChar(kCodePageUtf8, 0, "\xC3\xA9", 2, v); }},
    });
    expectVectorAllOrNothing<TqVector<char>>({
        {"to narrow", [](auto& v) { TqCharMapper::wideCharToMultiByte(kCodePageWestern, L"A\u00E9\u00E9", 3, v); }},
        {"to UTF-8", [](auto& v) { TqCharMapper::unicodeToUtf8(L"A\u00E9\u4E2D and more of it", 18, v); }},
    });
    expectVectorAllOrNothing<TqByteVector>();
}

TEST(ContainerFaults, NarrowString) {
    using S = TqStringA;
    const char* const text = "longer than what was there before, so that a block is needed for it";
    const std::vector<Row<S>> rows = {
        {"assign", [=](S& s) { s.assign(text); }},
        {"assign part of itself, shared", [](S& s) { s = s.c_str() + 2; }},
        {"assign a string made of text", [=](S& s) { s = S(text); }},
        {"an empty string with a code page", [=](S& s) { s = S(""); }},
        {"append text", [=](S& s) { s += text; }},
        {"append itself", [](S& s) { s += s; }},
        {"sum", [=](S& s) { s = s + text; }},
        {"sum from text", [=](S& s) { s = text + s; }},
        {"buffer", [](S& s) { s.getBuffer(500)[0] = 'x'; }},
        {"buffer of a shared one", [](S& s) { s.getBuffer(0)[0] = 'x'; }},
        {"release of a shared one", [](S& s) { s.releaseBuffer(2); }},
    };
    const auto seen = [](const S& s) { return std::pair(std::string(s.c_str(), s.length()), s.codePage()); };
    const auto fill = [](S& s) {
        s = "pier 3";
        return s;
    };
    expectAllOrNothing<S>(rows, fill, seen);
    std::vector<Row<S>> growing(rows.begin() + 4, rows.begin() + 9);
    growing.push_back(rows[0]);
    expectAllOrNothing<S>(
        growing, [&](S& s) { return fill(s).isEmpty(); }, seen);

    // The room for the whole limit cannot be had; that for the piece can.
    const S source("a run of bytes");
    TqAnsiTextIterator walk(source, kCodePageWestern);
    S piece("before");
    EXPECT_FALSE(runsOut(0, [&] { walk.breakSafely(6, piece); }));
    EXPECT_EQ(piece, "a run");
}

TEST(ContainerFaults, StandardStringThatTakesNull) {
    using S = CStdStr<wchar_t>;
    expectAllOrNothing<S>(
        {
            {"text", [](S& s) { s = kLong; }},
            {"string", [](S& s) { s = S(kLong); }},
            {"append", [](S& s) { s += kLong; }},
        },
        [](S& s) {
            s = L"short";
            return 0;
        },
        [](const S& s) { return std::wstring(s); });
}

TEST(ContainerFaults, StringList) {
    using L = CStringList;
    static CStringList others(2);
    others.RemoveAll();
    for (const wchar_t* text : {kLong, L"short", kOther})
        others.AddTail(text);
    const std::vector<Row<L>> rows = {
        {"head", [](L& l) { l.AddHead(kLong); }},
        {"tail", [](L& l) { l.AddTail(L::String(kLong)); }},
        {"tail, from itself", [](L& l) { l.AddTail(l.GetHead()); }},
        {"heads", [](L& l) { l.AddHead(&others); }},
        {"tails", [](L& l) { l.AddTail(&others); }},
        {"itself in front", [](L& l) { l.AddHead(&l); }},
        {"itself after", [](L& l) { l.AddTail(&l); }},
        {"before", [](L& l) { l.InsertBefore(l.GetTailPosition(), kLong); }},
        {"after", [](L& l) { l.InsertAfter(l.GetHeadPosition(), kLong); }},
        {"set", [](L& l) { l.SetAt(l.GetTailPosition(), kLong); }},
        {"set from a string", [](L& l) { l.SetAt(l.GetTailPosition(), L::String(kLong)); }},
    };
    // With and without a free node, and into nothing.
    for (const int spare : {0, 1})
        expectAllOrNothing<L>(
            rows,
            [spare](L& l) {
                l.AddTail(kOther);
                l.AddTail(L"b");
                l.AddTail(L"c");
                if (spare == 0)
                    l.AddTail(L"d");
                return 0;
            },
            textsOf<L>, 2);
    expectAllOrNothing<L>(
        {rows[0], rows[3], rows[4]}, [](L&) { return 0; }, textsOf<L>, 2);
    others.RemoveAll();
}

TEST(ContainerFaults, StringArray) {
    using A = CStringArray;
    static CStringArray others;
    for (const wchar_t* text : {kLong, L"short", kOther})
        others.Add(text);
    const std::vector<Row<A>> rows = {
        {"add", [](A& a) { a.Add(kLong); }},
        {"add, from itself", [](A& a) { a.Add(a[0]); }},
        {"append", [](A& a) { a.Append(others); }},
        {"append itself", [](A& a) { a.Append(a); }},
        {"copy", [](A& a) { a.Copy(others); }},
        {"set", [](A& a) { a.SetAt(1, kLong); }},
        {"set after the end", [](A& a) { a.SetAtGrow(a.GetSize() + 2, kLong); }},
        {"longer", [](A& a) { a.SetSize(a.GetSize() + 40, 7); }},
        {"gap", [](A& a) { a.InsertEmpty(1, 40); }},
        {"insert", [](A& a) { a.InsertAt(1, kLong, 3); }},
        {"insert one of itself", [](A& a) { a.InsertAt(1, a[0], 3); }},
        {"insert after the end", [](A& a) { a.InsertAt(a.GetSize() + 1, kLong, 2); }},
        {"insert others", [](A& a) { a.InsertAt(1, &others); }},
        {"insert others after the end", [](A& a) { a.InsertAt(a.GetSize() + 1, &others); }},
        {"insert itself", [](A& a) { a.InsertAt(1, &a); }},
    };
    for (const long long slots : {2LL, 60LL})
        expectAllOrNothing<A>(
            slots == 2 ? rows : std::vector<Row<A>>(rows.begin(), rows.begin() + 7),
            [slots](A& a) {
                a.SetSize(slots);
                a.SetSize(2);
                a.SetAt(0, kOther);
                a.SetAt(1, L"b");
                return 0;
            },
            textsOf<A>);
    expectAllOrNothing<A>(
        {rows[2], rows[4], rows[6], rows[11], rows[13]}, [](A&) { return 0; }, textsOf<A>);
    EXPECT_GT(sweepAllocations([](int failing) {
                  A array;
                  array.SetSize(3);
                  array.SetSize(2);
                  return !runsOut(failing, [&] { array.FreeExtra(); });
              }),
              0);
    others.RemoveAll();
}

TEST(ContainerFaults, Maps) {
    using M = CMapStringToPtr;
    using Entries = std::vector<std::pair<std::wstring, void*>>;
    static int object = 0;
    const auto entries = [](const M& map) {
        Entries found;
        for (__POSITION* pos = map.GetStartPosition(); pos != nullptr;) {
            String key;
            void* value = nullptr;
            map.GetNextAssoc(pos, key, value);
            found.emplace_back(key, value);
        }
        found.emplace_back(std::to_wstring(map.GetHashTableSize()), nullptr);
        found.emplace_back(std::to_wstring(counting_new::liveArrays()), nullptr); // of buckets and of entries
        return found;
    };
    const std::vector<Row<M>> rows = {
        {"set", [](M& m) { m.SetAt(kLong, &object); }},
        {"look up", [](M& m) { m[L"new"] = &object; }},
        {"buckets", [](M& m) { m.InitHashTable(50); }},
        {"iterate",
         [](M& m) {
             __POSITION* pos = m.GetStartPosition();
             String key;
             void* value = nullptr;
             if (pos != nullptr)
                 m.GetNextAssoc(pos, key, value);
             else
                 m[L"new"] = &object;
         }},
    };
    const auto fill = [](M& m) {
        m[kOther] = &object;
        return 0;
    };
    expectAllOrNothing<M>(rows, fill, entries, 1);
    expectAllOrNothing<M>(
        rows, [](M&) { return 0; }, entries, 1);

    CMapStringToString nothing(10);
    EXPECT_FALSE(runsOut(0, [&] { // stores nothing, so needs nothing
        nothing.SetAt(kLong, kLong);
        nothing.InitHashTable(100);
        nothing.RemoveKey(nothing[kLong].c_str());
    }));
}

TEST(ContainerFaults, MemoryStream) {
    using B = TqFlatMemBuf;
    static const std::vector<unsigned char> bytes(40000, 'x');
    static B source;
    source.writeBytes(bytes.data(), 300);
    const auto many = static_cast<std::uint32_t>(bytes.size());
    const std::vector<Row<B>> rows = {
        {"write", [=](B& b) { b.writeBytes(bytes.data(), many); }},
        {"write at a place", [=](B& b) { b.writeBytes(3, bytes.data(), many); }},
        {"byte, shared", [](B& b) { b.writeByte('z'); }},
        {"byte at a place, shared", [](B& b) { b.writeByte(0, 'z'); }},
        {"set, shared", [](B& b) { b.setBytes(0, bytes.data(), 2); }},
        {"longer", [](B& b) { b.setlength(b.length() + 500); }},
        {"reserve", [](B& b) { b.reserve(static_cast<std::uint32_t>(b.bufSize()) + 1); }},
        {"buffer, shared", [](B& b) { b.buffer()[0] = 'z'; }},
        {"copy from", [](B& b) { b.copyFrom(&source, 0, 300); }},
    };
    expectAllOrNothing<B>(
        rows,
        [](B& b) {
            b.writeBytes(bytes.data(), 10);
            b.seek(4, TqIO::kSeekStart);
            return b;
        },
        [](const B& b) {
            const unsigned char* first = b.buffer();
            return std::pair(b.tell(), std::vector<unsigned char>(first, first + b.length()));
        });
    source.setlength(0);
}

} // namespace
