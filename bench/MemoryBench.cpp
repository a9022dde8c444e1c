// How much memory stored things take: resident bytes of a process that stores many, divided by their number.

#include "bench/Heaps.h"
#include "bench/ResidentMemory.h"

#include <TqOsBase/containers/CMapStringToPtr.h>
#include <TqOsBase/containers/CStringArray.h>
#include <TqOsBase/containers/CStringList.h>
#include <TqOsBase/containers/TqStringA.h>

#include <benchmark/benchmark.h>
#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using namespace bench;

constexpr std::size_t kStored = 100000;
constexpr std::size_t kBlock = 48;

std::wstring nameOf(std::size_t number) {
    return L"Furniture-" + std::to_wstring(number);
}

// Runs `store(i)` for each of the stored things; what it stores in must outlive the measurement, so it is never freed.
template <class Store>
void report(benchmark::State& state, Store store) {
    for ([[maybe_unused]] auto _ : state) {
        const double bytes = growth([&] {
            for (std::size_t i = 0; i < kStored; ++i)
                store(i);
        });
        state.counters["bytes"] = bytes / static_cast<double>(kStored);
    }
}

template <class Store>
void addStored(const std::string& name, Store store) {
    benchmark::RegisterBenchmark(("memory/" + name).c_str(), [store](benchmark::State& state) {
        report(state, store);
    })->Iterations(1);
}

template <class Heap>
void storeBlock(std::size_t i) {
    auto* const block = static_cast<char*>(Heap::allocate(kBlock));
    *block = static_cast<char>(i);
    benchmark::DoNotOptimize(block);
}

template <class... Heaps>
void addHeaps(const std::string& name) {
    (addHeap<Heaps>("memory/" + name, [](benchmark::State& state) { report(state, storeBlock<Heaps>); }), ...);
}

[[maybe_unused]] const bool g_registered = [] {
    addHeaps<Ours, Malloc, Loaded<Mimalloc>, Loaded<Jemalloc>, Loaded<Tcmalloc>>("block of 48 bytes");

    addStored("narrow string of 20 characters/ours", [strings = new std::vector<TqStringA>](std::size_t i) {
        strings->reserve(kStored);
        strings->emplace_back(std::string(20, static_cast<char>('a' + i % 26)).c_str());
    });
    addStored("narrow string of 20 characters/string", [strings = new std::vector<std::string>](std::size_t i) {
        strings->reserve(kStored);
        strings->emplace_back(20, static_cast<char>('a' + i % 26));
    });

    addStored("name in a list/ours",
              [list = new CStringList(1000)](std::size_t i) { list->AddTail(nameOf(i).c_str()); });
    addStored("name in a list/list",
              [list = new std::list<std::wstring>](std::size_t i) { list->push_back(nameOf(i)); });

    addStored("name in an array/ours", [array = new CStringArray](std::size_t i) { array->Add(nameOf(i).c_str()); });
    addStored("name in an array/vector",
              [vector = new std::vector<std::wstring>](std::size_t i) { vector->push_back(nameOf(i)); });

    addStored("map entry/ours", [map = new CMapStringToPtr(1000)](std::size_t i) {
        if (i == 0)
            map->InitHashTable(kStored);
        map->SetAt(nameOf(i).c_str(), nullptr);
    });
    addStored("map entry/unordered_map", [map = new std::unordered_map<std::wstring, void*>](std::size_t i) {
        if (i == 0)
            map->reserve(kStored);
        map->emplace(nameOf(i), nullptr);
    });
    return true;
}();

} // namespace
