// Random operations on every container and the same on a model, with allocations that fail now and then. test_faults
// plays this too: there it is not operator new alone that fails.
#include "reference/ModelPlay.h"

namespace {

using reference::Operation;
using reference::play;
using String = CStdStr<wchar_t>;
using ContainerModel = reference::LeavesNothing;

constexpr const wchar_t* kLong = L"a text too long for the string's own small buffer";

// A collection of texts by number. What lies between its end and a place beyond it is filled with empty ones.
struct Texts : std::vector<std::wstring> {
    using std::vector<std::wstring>::vector;
    void put(long long at, const std::wstring& text) {
        resize(std::max(static_cast<std::size_t>(at) + 1, size()));
        (*this)[static_cast<std::size_t>(at)] = text;
    }
    void add(long long at, const Texts& texts) {
        resize(std::max(static_cast<std::size_t>(at), size()));
        insert(begin() + at, texts.begin(), texts.end());
    }
    void add(const Texts& texts) { add(static_cast<long long>(size()), texts); }
};

const wchar_t* tailOf(const std::wstring& text) {
    return text.c_str() + (text.empty() ? 0 : 1);
}

const Texts kOthers{L"1", kLong, L"3"};

Texts contents(const CStringArray& array) {
    Texts result;
    for (long long i = 0; i < array.GetSize(); ++i)
        result.push_back(array[i]);
    return result;
}

// Walked forwards; the walk backwards must agree.
Texts contents(const CStringList& list) {
    Texts forward, backward;
    for (__POSITION* pos = list.GetHeadPosition(); pos != nullptr;)
        forward.push_back(list.GetNext(pos));
    for (__POSITION* pos = list.GetTailPosition(); pos != nullptr;)
        backward.insert(backward.begin(), list.GetPrev(pos));
    EXPECT_EQ(forward, backward);
    return forward;
}

// The order of iteration: buckets ascending, each from the entry inserted last.
using Entries = std::vector<std::pair<std::wstring, void*>>;

Entries contents(const CMapStringToPtr& map) {
    Entries result;
    String key;
    void* value = nullptr;
    for (__POSITION* pos = map.GetStartPosition(); pos != nullptr;) {
        map.GetNextAssoc(pos, key, value);
        result.emplace_back(key, value);
    }
    return result;
}

template <class Collection, class Model>
void expectSame(const Collection& collection, const Model& model) {
    ASSERT_EQ(contents(collection), model);
    ASSERT_EQ(collection.GetCount(), static_cast<long long>(model.size()));
    ASSERT_EQ(collection.GetSize(), collection.GetCount());
    ASSERT_EQ(collection.IsEmpty(), model.empty());
}

struct Choice {
    void next(std::mt19937& random, const Texts& model) {
        const auto below = [&random](std::size_t n) { return static_cast<long long>(random() % n); };
        value = std::to_wstring(random() % 20) + (random() % 2 != 0 ? kLong : L"");
        string = value.c_str();
        count = below(4);
        at = below(model.size() + 3);
        first = below(std::max<std::size_t>(model.size(), 1)); // an element
        last = std::min(first + count, static_cast<long long>(model.size()));
        several = Texts(static_cast<std::size_t>(count), value);
    }
    std::wstring value;
    String string;
    Texts several;
    long long count = 0, at = 0, first = 0, last = 0;
};

TEST_F(ContainerModel, CStringArray) {
    CStringArray a, others;
    for (const std::wstring& text : kOthers)
        others.Add(text.c_str());
    Texts m;
    Choice c;
    const auto element = [&]() -> std::wstring& { return m[static_cast<std::size_t>(c.first)]; };
    const std::vector<Operation> operations = {
        {[&] { a.Add(c.string); }, [&] { m.push_back(c.value); }},
        {[&] { a.SetAtGrow(c.at, c.value.c_str()); }, [&] { m.put(c.at, c.value); }},
        {[&] { a.SetAtGrow(c.at, c.string); }, [&] { m.put(c.at, c.value); }},
        {[&] { a.InsertEmpty(c.at, c.count); }, [&] { m.add(c.at, Texts(c.several.size())); }},
        {[&] { a.InsertAt(c.at, c.string, c.count); }, [&] { m.add(c.at, c.several); }},
        {[&] { a.InsertAt(c.at, c.value.c_str()); }, [&] { m.add(c.at, {c.value}); }},
        {[&] { a.InsertAt(c.at, &others); }, [&] { m.add(c.at, kOthers); }},
        {[&] { a.SetSize(c.at); }, [&] { m.resize(static_cast<std::size_t>(c.at)); }},
        {[&] { a.SetSize(c.at + 40, 7); }, [&] { m.resize(static_cast<std::size_t>(c.at) + 40); }},
        {[&] { a.Append(others); }, [&] { m.add(kOthers); }},
        {[&] { a.Append(a); }, [&] { m.add(Texts(m)); }},
        {[&] { a.Copy(others); }, [&] { m = kOthers; }},
        {[&] { a.Copy(a); }, [] {}},
        {[&] { a.Copy(CStringArray()); }, [&] { m.clear(); }},
        {[&] { a.FreeExtra(); }, [] {}},
        {[&] { a.RemoveAll(); }, [&] { m.clear(); }},
        // of an element
        {[&] { a.Add(a[c.first]); }, [&] { m.add({element()}); }},
        {[&] { a.Add(tailOf(a[c.first])); }, [&] { m.add({tailOf(element())}); }},
        {[&] { a.SetAt(c.first, c.value.c_str()); }, [&] { element() = c.value; }},
        {[&] { a.SetAt(c.first, tailOf(a[c.first])); }, [&] { element() = tailOf(element()); }},
        {[&] { a.SetAtGrow(c.at, a[c.first]); }, [&] { m.put(c.at, std::wstring(element())); }},
        {[&] { a.InsertAt(c.at, a[c.first], c.count); },
         [&] { m.add(c.at, Texts(static_cast<std::size_t>(c.count), element())); }},
        {[&] { a.InsertAt(c.at, &a); }, [&] { m.add(c.at, Texts(m)); }},
        {[&] { a.RemoveAt(c.first); }, [&] { m.erase(m.begin() + c.first); }},
        {[&] { a.RemoveAt(c.first, c.last - c.first); }, [&] { m.erase(m.begin() + c.first, m.begin() + c.last); }}};
    const auto choose = [&](std::mt19937& random) {
        if (m.size() > 60) {
            a.SetSize(5);
            m.resize(5);
        }
        c.next(random, m);
        return m.empty() ? 16 : operations.size();
    };
    EXPECT_GT(play(13, operations, choose, [&] { expectSame(a, m); }), 0);
}

TEST_F(ContainerModel, CStringList) {
    CStringList l(7), others(2);
    for (const std::wstring& text : kOthers)
        others.AddTail(text.c_str());
    Texts m;
    Choice c;
    const auto pos = [&] { return l.FindIndex(c.first); };
    const auto element = [&]() -> std::wstring& { return m[static_cast<std::size_t>(c.first)]; };
    const auto found = [&] { return std::find(m.begin() + c.first + 1, m.end(), c.value) - m.begin(); };
    const std::vector<Operation> operations = {
        {[&] { l.AddHead(c.value.c_str()); }, [&] { m.add(0, {c.value}); }},
        {[&] { l.AddHead(c.string); }, [&] { m.add(0, {c.value}); }},
        {[&] { l.AddTail(c.string); }, [&] { m.add({c.value}); }},
        {[&] { l.AddHead(&others); }, [&] { m.add(0, kOthers); }},
        {[&] { l.AddTail(&others); }, [&] { m.add(kOthers); }},
        {[&] { l.AddHead(&l); }, [&] { m.add(0, Texts(m)); }},
        {[&] { l.AddTail(&l); }, [&] { m.add(Texts(m)); }},
        {[&] { l.InsertBefore(nullptr, c.string); }, [&] { m.add(0, {c.value}); }},
        {[&] { l.InsertBefore(nullptr, c.value.c_str()); }, [&] { m.add(0, {c.value}); }},
        {[&] { l.InsertAfter(nullptr, c.value.c_str()); }, [&] { m.add({c.value}); }},
        {[&] { l.InsertAfter(nullptr, c.string); }, [&] { m.add({c.value}); }},
        // of an element
        {[&] { l.InsertBefore(pos(), c.value.c_str()); }, [&] { m.add(c.first, {c.value}); }},
        {[&] { l.InsertBefore(pos(), c.string); }, [&] { m.add(c.first, {c.value}); }},
        {[&] { l.InsertAfter(pos(), c.string); }, [&] { m.add(c.first + 1, {c.value}); }},
        {[&] { l.InsertAfter(pos(), c.value.c_str()); }, [&] { m.add(c.first + 1, {c.value}); }},
        {[&] { l.InsertAfter(pos(), l.GetAt(pos())); }, [&] { m.add(c.first, {element()}); }},
        {[&] { l.AddTail(tailOf(l.GetAt(pos()))); }, [&] { m.add({tailOf(element())}); }},
        {[&] { l.SetAt(pos(), c.string); }, [&] { element() = c.value; }},
        {[&] { l.SetAt(pos(), tailOf(l.GetAt(pos()))); }, [&] { element() = tailOf(element()); }},
        {[&] { l.RemoveAt(pos()); }, [&] { m.erase(m.begin() + c.first); }},
        {[&] { ASSERT_EQ(l.RemoveHead(), m.front()); }, [&] { m.erase(m.begin()); }},
        {[&] { ASSERT_EQ(l.RemoveTail(), m.back()); }, [&] { m.pop_back(); }},
        {[&] { ASSERT_EQ(l.Find(c.value.c_str(), pos()), l.FindIndex(found())); }, [] {}}};
    const auto choose = [&](std::mt19937& random) {
        if (m.size() > 60) {
            l.RemoveAll();
            m.clear();
        }
        c.next(random, m);
        return m.empty() ? 11 : operations.size();
    };
    EXPECT_GT(play(11, operations, choose, [&] { expectSame(l, m); }), 0);
}

TEST_F(ContainerModel, CMapStringToPtr) {
    CMapStringToPtr map(5);
    Entries model;
    std::wstring key;
    char objects[2];
    void* value = nullptr;
    unsigned buckets = 17;
    const auto bucketOf = [&](const std::wstring& text) {
        std::uint32_t hash = 0;
        for (const wchar_t c : text)
            hash = hash * 33 + static_cast<std::uint32_t>(c);
        return hash % buckets;
    };
    const auto entry = [&] {
        return std::find_if(model.begin(), model.end(), [&](const auto& e) { return e.first == key; });
    };
    const auto set = [&] {
        const auto there = entry();
        const auto isAfter = [&](const auto& e) { return bucketOf(e.first) >= bucketOf(key); };
        if (there != model.end())
            there->second = value;
        else
            model.insert(std::find_if(model.begin(), model.end(), isAfter), {key, value});
    };
    const std::vector<Operation> operations = {
        {[&] { map.SetAt(key.c_str(), value); }, set},
        {[&] { map[key.c_str()] = value; }, set},
        {[&] { ASSERT_EQ(map.RemoveKey(key.c_str()), entry() != model.end()); },
         [&] { std::erase_if(model, [&](const auto& e) { return e.first == key; }); }},
        // rarely
        {[&] { map.InitHashTable(buckets, false); }, [&] { model.clear(); }},
        {[&] { map.InitHashTable(buckets); }, [&] { model.clear(); }},
        {[&] { map.RemoveAll(); }, [&] { model.clear(); }}};
    const auto choose = [&](std::mt19937& random) {
        if (model.empty()) {
            buckets = 1 + static_cast<unsigned>(random() % 40);
            map.InitHashTable(buckets, random() % 2 == 0);
        }
        key = std::to_wstring(random() % 60) + std::wstring(random() % 3, L'k');
        value = &objects[random() % 2];
        return random() % 200 == 0 ? operations.size() : 3;
    };
    play(17, operations, choose, [&] {
        expectSame(map, model);
        void* found = nullptr;
        ASSERT_EQ(map.Lookup(key.c_str(), found), entry() != model.end());
        ASSERT_EQ(found, entry() == model.end() ? nullptr : entry()->second);
        ASSERT_EQ(map.GetHashTableSize(), buckets);
    });
}

// Of which leaks are counted as all others are.
template <class T>
struct OwnAllocator {
    static T* allocate(int count) { return new T[static_cast<std::size_t>(count)]; }
    static void release(T* slots, int) noexcept { delete[] slots; }
};

constexpr std::size_t kCrowd = 5;

template <class Vector>
void playVectors(unsigned seed) {
    using Element = std::remove_reference_t<decltype(std::declval<Vector&>()[0])>;
    Vector vectors[kCrowd];
    std::vector<Element> models[kCrowd];
    std::size_t i = 0, j = 0, length = 0, there = 0;
    Element value{};
    const auto resize = [&](std::size_t size) {
        const int old = vectors[i].logicalLength();
        vectors[i].setLogicalLength(static_cast<int>(size));
        for (int k = old; k < static_cast<int>(size); ++k)
            vectors[i][k] = value;
    };
    const auto addSlot = [&] {
        vectors[i].setPhysicalLength(vectors[i].physicalLength() + 1);
        vectors[i].setLogicalLength(static_cast<int>(models[i].size()));
    };
    const auto appendOwn = [&] { vectors[i].append(std::as_const(vectors[i])[static_cast<int>(there)]); };
    const std::vector<Operation> operations = {
        {[&] { vectors[i] = vectors[j]; }, [&] { models[i] = models[j]; }},
        {[&] { resize(length); }, [&] { models[i].resize(length, value); }},
        {[&] { vectors[i].append(value); }, [&] { models[i].push_back(value); }},
        // of an element
        {appendOwn, [&] { models[i].push_back(models[i][there]); }},
        {[&] { vectors[i][static_cast<int>(there)] = value; }, [&] { models[i][there] = value; }},
        {[&] { *vectors[i].last() = value; }, [&] { models[i].back() = value; }},
        {[&] { vectors[i].asArrayPtr()[0] = value; }, [&] { models[i][0] = value; }},
        {addSlot, [] {}}};
    const auto choose = [&](std::mt19937& random) {
        i = random() % kCrowd;
        j = random() % kCrowd;
        length = random() % 40;
        value = static_cast<Element>(random() % 100);
        there = random() % std::max<std::size_t>(models[i].size(), 1);
        return models[i].empty() ? 3 : operations.size();
    };
    play(seed, operations, choose, [&] {
        for (std::size_t k = 0; k < kCrowd; ++k) {
            const Vector& seen = vectors[k];
            ASSERT_EQ(static_cast<std::size_t>(seen.logicalLength()), models[k].size());
            ASSERT_LE(seen.logicalLength(), seen.physicalLength());
            ASSERT_TRUE(std::equal(models[k].begin(), models[k].end(), seen.asArrayPtr()));
        }
    });
}

TEST_F(ContainerModel, TqVector) {
    playVectors<TqVector<wchar_t>>(1);
    playVectors<TqVector<char>>(2);
    playVectors<TqByteVector>(3);
    playVectors<TqVector<short, OwnAllocator<short>, TqRefCounter, TqVectorFlatMemBufGrowPolicy>>(4);
}

// A crowd of strings that copy, change and feed each other, and themselves.
TEST_F(ContainerModel, TqStringA) {
    TqStringA strings[kCrowd];
    std::string models[kCrowd];
    std::size_t i = 0, j = 0, from = 0;
    std::string text;
    const auto overwrite = [&] {
        std::memset(strings[i].getBuffer(static_cast<int>(from)), '*', from);
        strings[i].releaseBuffer(static_cast<int>(from));
    };
    const std::vector<Operation> operations = {
        {[&] { strings[i] = text.c_str(); }, [&] { models[i] = text; }},
        // what makes it longer than it may become
        {[&] { strings[i] = strings[j]; }, [&] { models[i] = models[j]; }},
        {[&] { strings[i] = TqStringA(text.c_str()); }, [&] { models[i] = text; }},
        {[&] { strings[i] = strings[j] + text.c_str(); }, [&] { models[i] = models[j] + text; }},
        {[&] { strings[i] = text.c_str() + strings[j]; }, [&] { models[i] = text + models[j]; }},
        {[&] { strings[i] += strings[j]; }, [&] { models[i] += models[j]; }},
        {[&] { strings[i] += text.c_str(); }, [&] { models[i] += text; }},
        {[&] { strings[i].assign(strings[i].c_str() + from); }, [&] { models[i].erase(0, from); }},
        {[&] { strings[i] += strings[i].c_str() + from; }, [&] { models[i] += models[i].substr(from); }},
        {overwrite, [&] { models[i].assign(from, '*'); }}};
    const auto choose = [&](std::mt19937& random) {
        i = random() % kCrowd;
        j = random() % kCrowd;
        text.assign(random() % 30, static_cast<char>('a' + random() % 26));
        from = random() % (models[i].size() + 1);
        return models[i].size() > 2000 ? 1 : operations.size();
    };
    play(7, operations, choose, [&] {
        for (std::size_t k = 0; k < kCrowd; ++k)
            ASSERT_EQ(models[k], strings[k].c_str());
        ASSERT_EQ(strings[i] < strings[j], models[i] < models[j]);
    });
}

} // namespace
