// The string collections beside the standard ones. Keys are terminated text, as the callers have them; the peers
// "string at hand" show what the standard tables do for a caller who happens to have a string object instead.

#include "bench/Registration.h"

#include <TqOsBase/containers/CMapStringToPtr.h>
#include <TqOsBase/containers/CStringArray.h>
#include <TqOsBase/containers/CStringList.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstddef>
#include <cstdint>
#include <list>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#if defined(TQ_BENCH_ABSL)
#include <absl/container/flat_hash_map.h>
#endif

namespace {

constexpr std::size_t kEntries = 1000;
constexpr std::size_t kManyEntries = 100000;
constexpr std::size_t kAppended = 100000;

// An odd number, a fifth more than entries.
constexpr unsigned bucketsFor(std::size_t entries) {
    return static_cast<unsigned>(entries * 6 / 5 | 1);
}

using Strings = std::vector<CStdStr<wchar_t>>;

// Names as a drawing has them; those of another series are not among them.
Strings names(std::size_t count, const wchar_t* series) {
    const wchar_t* const kinds[] = {L"Walls", L"Furniture", L"Dim", L"Hatch-Concrete", L"Text-Annotation"};
    Strings result;
    for (std::size_t i = 0; i < count; ++i)
        result.push_back(std::wstring(kinds[i % std::size(kinds)]) + series + std::to_wstring(i));
    std::shuffle(result.begin(), result.end(), std::mt19937(7));
    return result;
}

Strings shortStrings(std::size_t count) {
    Strings result;
    for (std::size_t i = 0; i < count; ++i)
        result.push_back(std::to_wstring(i % 1000));
    return result;
}

struct Ours {
    static constexpr const char* kName = "ours";
    explicit Ours(std::size_t count) { map.InitHashTable(bucketsFor(count)); }
    void insert(const wchar_t* key, void* value) { map.SetAt(key, value); }
    const void* find(const std::wstring& key) const {
        void* value = nullptr;
        map.Lookup(key.c_str(), value);
        return value;
    }
    std::size_t sumOfLengths() const {
        std::size_t sum = 0;
        CStdStr<wchar_t> key;
        void* value = nullptr;
        for (__POSITION* pos = map.GetStartPosition(); pos != nullptr;) {
            map.GetNextAssoc(pos, key, value);
            sum += key.size();
        }
        return sum;
    }
    CMapStringToPtr map{kEntries};
};

// Tables that must be given a string object: made for the look-up from the text that the caller has, or there already.
template <class Map, bool HasString>
struct Standard {
    explicit Standard(std::size_t count) { map.reserve(bucketsFor(count)); }
    void insert(const wchar_t* key, void* value) { map.emplace(key, value); }
    const void* find(const std::wstring& key) const {
        const auto found = HasString ? map.find(key) : map.find(std::wstring(key.c_str()));
        return found == map.end() ? nullptr : found->second;
    }
    std::size_t sumOfLengths() const {
        std::size_t sum = 0;
        for (const auto& [key, value] : map)
            sum += key.size();
        return sum;
    }
    Map map;
};

struct UnorderedMap : Standard<std::unordered_map<std::wstring, void*>, false> {
    using Standard::Standard;
    static constexpr const char* kName = "unordered_map";
};
struct UnorderedMapOfStrings : Standard<std::unordered_map<std::wstring, void*>, true> {
    using Standard::Standard;
    static constexpr const char* kName = "unordered_map, string at hand";
};

#if defined(TQ_BENCH_ABSL)
struct FlatHashMap : Standard<absl::flat_hash_map<std::wstring, void*>, true> {
    using Standard::Standard;
    static constexpr bool kIsMissing = false;
#else
struct FlatHashMap : UnorderedMap {
    using UnorderedMap::UnorderedMap;
    static constexpr bool kIsMissing = true;
#endif
    static constexpr const char* kName = "absl, string at hand";
};

void report(benchmark::State& state, std::size_t operations, std::uint64_t checksum) {
    benchmark::DoNotOptimize(checksum);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(operations));
}

template <class Map>
void fill(Map& map, const Strings& keys) {
    for (const auto& key : keys)
        map.insert(key.c_str(), const_cast<wchar_t*>(key.c_str()));
}

template <class Map>
void lookUp(benchmark::State& state, std::size_t entries, const wchar_t* series) {
    const Strings keys = names(entries, L"-");
    Strings wanted = names(entries, series);
    std::shuffle(wanted.begin(), wanted.end(), std::mt19937(11));
    Map map(entries);
    fill(map, keys);
    std::uint64_t found = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (const std::wstring& key : wanted)
            found += map.find(key) != nullptr;
    }
    report(state, entries, found);
}

template <class Map>
void iterateMap(benchmark::State& state) {
    const Strings keys = names(kEntries, L"-");
    Map map(kEntries);
    fill(map, keys);
    std::uint64_t sum = 0;
    for ([[maybe_unused]] auto _ : state)
        sum += map.sumOfLengths();
    report(state, kEntries, sum);
}

template <class Map>
void buildMap(benchmark::State& state) {
    const Strings keys = names(kEntries, L"-");
    for ([[maybe_unused]] auto _ : state) {
        Map map(kEntries);
        fill(map, keys);
        benchmark::DoNotOptimize(map.find(keys.back()));
    }
    report(state, kEntries, 0);
}

void buildList(benchmark::State& state, const Strings& strings, long long blockSize) {
    for ([[maybe_unused]] auto _ : state) {
        CStringList list(blockSize);
        for (const auto& string : strings)
            list.AddTail(string);
        benchmark::DoNotOptimize(list.GetTail().c_str());
    }
    report(state, strings.size(), 0);
}

void buildStandardList(benchmark::State& state, const Strings& strings) {
    for ([[maybe_unused]] auto _ : state) {
        std::list<std::wstring> list;
        for (const std::wstring& string : strings)
            list.push_back(string);
        benchmark::DoNotOptimize(list.back().c_str());
    }
    report(state, strings.size(), 0);
}

void iterateList(benchmark::State& state, const Strings& strings) {
    CStringList list(kEntries);
    for (const auto& string : strings)
        list.AddTail(string);
    std::uint64_t sum = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (__POSITION* pos = list.GetHeadPosition(); pos != nullptr;)
            sum += std::as_const(list).GetNext(pos).size();
    }
    report(state, strings.size(), sum);
}

template <class Container>
void iterateStandard(benchmark::State& state, const Strings& strings) {
    const Container container(strings.begin(), strings.end());
    std::uint64_t sum = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (const std::wstring& string : container)
            sum += string.size();
        benchmark::DoNotOptimize(sum);
    }
    report(state, strings.size(), sum);
}

void appendArray(benchmark::State& state, long long growBy) {
    const Strings strings = shortStrings(kAppended);
    for ([[maybe_unused]] auto _ : state) {
        CStringArray array;
        array.SetSize(0, growBy);
        for (const auto& string : strings)
            array.Add(string);
        benchmark::DoNotOptimize(array.GetAt(0).c_str());
    }
    report(state, kAppended, 0);
}

void appendVector(benchmark::State& state) {
    const Strings strings = shortStrings(kAppended);
    for ([[maybe_unused]] auto _ : state) {
        Strings vector;
        for (const std::wstring& string : strings)
            vector.push_back(string);
        benchmark::DoNotOptimize(vector.front().c_str());
    }
    report(state, kAppended, 0);
}

template <class Map>
void registerMap(const std::string& area, const std::string& title, void (*run)(benchmark::State&)) {
    const std::string name = area + "/" + title + "/" + Map::kName;
    if constexpr (requires { Map::kIsMissing; }) {
        if (Map::kIsMissing) {
            bench::addMissing(name);
            return;
        }
    }
    bench::add(name, run);
}

template <class... Maps>
void registerMaps() {
    const std::string area = "collections";
    (registerMap<Maps>(area, "map look-up hit", [](benchmark::State& state) { lookUp<Maps>(state, kEntries, L"-"); }),
     ...);
    (registerMap<Maps>(area, "map look-up miss", [](benchmark::State& state) { lookUp<Maps>(state, kEntries, L"_"); }),
     ...);
    (registerMap<Maps>(area, "map look-up hit of 100,000",
                       [](benchmark::State& state) { lookUp<Maps>(state, kManyEntries, L"-"); }),
     ...);
    (registerMap<Maps>(area, "map look-up miss of 100,000",
                       [](benchmark::State& state) { lookUp<Maps>(state, kManyEntries, L"_"); }),
     ...);
    (registerMap<Maps>(area, "map iterate", iterateMap<Maps>), ...);
    (registerMap<Maps>(area, "map build and destroy", buildMap<Maps>), ...);
}

[[maybe_unused]] const bool g_registered = [] {
    registerMaps<Ours, UnorderedMap, UnorderedMapOfStrings, FlatHashMap>();
    for (const bool isShort : {true, false}) {
        const Strings strings = isShort ? shortStrings(kEntries) : names(kEntries, L"-");
        for (const long long blockSize : {16, 1000}) {
            const std::string title = std::string("collections/list build and destroy, ") +
                                      (isShort ? "short strings" : "names") + ", blocks of " +
                                      std::to_string(blockSize);
            bench::add(title + "/ours",
                       [strings, blockSize](benchmark::State& state) { buildList(state, strings, blockSize); });
            bench::add(title + "/list", [strings](benchmark::State& state) { buildStandardList(state, strings); });
        }
    }
    const Strings strings = names(kEntries, L"-");
    bench::add("collections/list iterate/ours", [strings](benchmark::State& state) { iterateList(state, strings); });
    bench::add("collections/list iterate/list",
               [strings](benchmark::State& state) { iterateStandard<std::list<std::wstring>>(state, strings); });
    bench::add("collections/list iterate/vector",
               [strings](benchmark::State& state) { iterateStandard<std::vector<std::wstring>>(state, strings); });
    bench::add("collections/array append 100,000/ours", [](benchmark::State& state) { appendArray(state, 0); });
    bench::add("collections/array append 100,000/vector", appendVector);
    bench::add("collections/array append 100,000, grow-by 50,000/ours",
               [](benchmark::State& state) { appendArray(state, 50000); });
    bench::add("collections/array append 100,000, grow-by 50,000/vector", appendVector);
    return true;
}();

} // namespace
