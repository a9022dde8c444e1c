// Every address that the heap hands out, against a model that works by the rules alone: lists are lists, pages move
// between them at once, and nothing is put off. One test, in a program of its own, so that the heap is fresh.

#include "HeapFixture.h"

namespace {

using namespace heap_test;

class Model {
public:
    // Offset of the next block of `unit` bytes in the reservation.
    std::size_t allocate(std::size_t unit) {
        std::list<std::size_t>& partial = m_partial[unit];
        if (partial.empty()) {
            partial.push_front(takePage());
            m_pages[partial.front()] = Page{unit, 0, {}};
        }
        Page& page = m_pages[partial.front()];
        const std::size_t at = partial.front() * kPageBytes + page.take() * unit;
        if (page.countFree() == 0)
            partial.pop_front();
        return at;
    }

    void free(std::size_t offset) {
        const std::size_t number = offset / kPageBytes;
        Page& page = m_pages[number];
        std::list<std::size_t>& partial = m_partial[page.unit];
        const bool wasFull = page.countFree() == 0;
        if (page.countFree() + 1 == kPageBytes / page.unit) {
            partial.remove(number);
            m_pages.erase(number);
            returnPage(number);
            return;
        }
        if (wasFull)
            partial.push_front(number);
        page.give(offset % kPageBytes / page.unit);
    }

    std::size_t allocateSegment() {
        std::size_t id = m_hint;
        while (id > 0 && m_inUse.count(id) != 0)
            --id;
        m_hint = id - 1; // the test never comes near the lowest
        m_inUse.insert(id);
        return id;
    }

    void freeSegment(std::size_t id) {
        m_inUse.erase(id);
        m_hint = std::max(m_hint, id);
    }

private:
    // Units of a page are numbered; those from `bump` on are free, and those in the chain, the last one first.
    struct Page {
        std::size_t unit, bump;
        std::vector<std::size_t> chain;

        std::size_t last() const { return kPageBytes / unit; }
        std::size_t countFree() const { return last() - bump + chain.size(); }
        std::size_t take() {
            if (chain.empty())
                return bump++;
            const std::size_t taken = chain.back();
            chain.pop_back();
            return taken;
        }
        void give(std::size_t index) {
            if (chain.empty() && index + 1 == bump) {
                --bump;
                return;
            }
            while (bump < last()) // what was not handed out yet comes behind, in order
                chain.insert(chain.begin(), bump++);
            chain.push_back(index);
        }
    };

    struct Segment {
        std::deque<std::size_t> committed, uncommitted;
    };

    std::size_t takePage() {
        if (m_a.empty() && m_b.empty()) {
            const std::size_t id = allocateSegment();
            for (std::size_t page = 2; page < 256; ++page)
                (page < 16 ? m_segments[id].committed : m_segments[id].uncommitted).push_back(id * 256 + page);
            m_a.push_front(id);
        } else if (m_a.empty()) {
            Segment& segment = m_segments[m_b.front()];
            do {
                segment.committed.push_back(segment.uncommitted.front());
                segment.uncommitted.pop_front();
            } while (segment.committed.size() < 16 && !segment.uncommitted.empty() &&
                     segment.uncommitted.front() == segment.committed.back() + 1);
            m_a.push_front(m_b.front());
            m_b.pop_front();
        }
        Segment& segment = m_segments[m_a.front()];
        const std::size_t page = segment.committed.front();
        segment.committed.pop_front();
        if (segment.committed.empty()) {
            if (!segment.uncommitted.empty())
                m_b.push_front(m_a.front());
            m_a.pop_front();
        }
        return page;
    }

    void returnPage(std::size_t page) {
        const std::size_t id = page / 256;
        Segment& segment = m_segments[id];
        if (segment.committed.size() < 16) {
            if (segment.committed.empty()) {
                m_b.remove(id);
                m_a.push_front(id);
            }
            segment.committed.push_front(page);
        } else if (segment.committed.size() + segment.uncommitted.size() + 1 == 254 && m_a.size() + m_b.size() > 1) {
            m_a.remove(id);
            m_segments.erase(id);
            freeSegment(id);
        } else {
            segment.uncommitted.push_front(page);
        }
    }

    std::size_t m_hint = 4096;
    std::set<std::size_t> m_inUse;
    std::list<std::size_t> m_a; // segments with committed free pages
    std::list<std::size_t> m_b; // segments with uncommitted ones only
    std::map<std::size_t, Segment> m_segments;
    std::map<std::size_t, Page> m_pages;
    std::map<std::size_t, std::list<std::size_t>> m_partial; // by unit
};

using HeapModel = HeapTest;

// A block with its offset in the model, or a unit with the number of its segment. What they hold is for other tests.
struct Live {
    void* block;
    std::size_t place;
};

TEST_F(HeapModel, EveryAddressFollowsFromTheRules) {
    using Configurator = tq::detail::TqHeapConfigurator;
    constexpr std::size_t kUnits[] = {8, 24, 176, 256, 512, 2048, 4096, 4096, 4096};
    std::mt19937 random(20240917);
    const auto below = [&random](std::size_t n) { return random() % n; };
    Model model;
    std::vector<Live> live, units;
    for (std::size_t i = 0; i < 400000 && !HasFatalFailure(); ++i) {
        // Phases that differ in the blocks alive and in the sizes, down to one size alone.
        const std::size_t phase = i / 20000;
        const std::size_t target = phase % 2 == 0 ? 200 + phase * 200 : phase;
        const std::size_t unit = kUnits[phase % 5 == 4 ? phase % 9 : below(std::size(kUnits))];
        const std::size_t order = below(4); // the latest, the earliest, any
        const std::size_t k = live.empty() || order == 0 ? live.size() - 1 : order == 1 ? 0 : below(live.size());
        if (below(500) == 0 && units.size() < 4) {
            units.push_back({tqAllocPage(), model.allocateSegment()});
            ASSERT_EQ(Configurator::segmentOf(units.back().block), units.back().place);
        } else if (below(500) == 0 && !units.empty()) {
            tqFree(units.back().block);
            model.freeSegment(units.back().place);
            units.pop_back();
        } else if (live.empty() || (live.size() < target + 50 && below(live.size() < target ? 3 : 2) != 0)) {
            live.push_back({tqMalloc(unit), model.allocate(unit)});
            ASSERT_EQ(Configurator::offsetOf(live.back().block), live.back().place) << "operation " << i;
        } else if (order == 3) {
            void* const moved = tqRealloc(live[k].block, unit);
            const std::size_t place = model.allocate(unit);
            model.free(live[k].place);
            live[k] = {moved, place};
            ASSERT_EQ(Configurator::offsetOf(moved), place) << "operation " << i;
        } else {
            tqFree(live[k].block);
            model.free(live[k].place);
            live.erase(live.begin() + static_cast<std::ptrdiff_t>(k));
        }
        if (i % 5000 == 0) {
            ASSERT_EQ(tq::detail::checkHeap(g_tqGlobalHeap), "") << "operation " << i;
            std::size_t used = 0;
            for (const tq::HeapReport::Pool& pool : tq::heapReport().pools)
                used += pool.usedBlocks;
            ASSERT_EQ(used, live.size() + units.size());
        }
    }
    for (const auto* blocks : {&live, &units})
        for (const Live& block : *blocks)
            tqFree(block.block);
}

} // namespace
