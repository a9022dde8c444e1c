#include <TqOsBase/memory/HeapReport.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace tq {

namespace {

using State = HeapReport::PageState;

// A few numbers with text between them.
template <class... Args>
void append(std::string& text, const char* format, Args... args) {
    char line[256];
    const int length = std::snprintf(line, sizeof line, format, args...);
    if (length > 0)
        text.append(line, std::min(static_cast<std::size_t>(length), sizeof line - 1));
}

struct Look {
    State state;
    std::string_view colour;
    std::string_view meaning;
};

constexpr Look kLooks[] = {
    {State::kHeader, "#5b6b7a", "header"},        {State::kInPool, "#1f6fb2", "in a pool, the darker the fuller"},
    {State::kReserve, "#9fd3a8", "free, kept"},   {State::kWaiting, "#e8d38a", "free, memory waits"},
    {State::kGivenBack, "#efefef", "given back"}, {State::kUntouched, "#ffffff", "never used"},
};

const Look& lookOf(State state) {
    for (const Look& look : kLooks)
        if (look.state == state)
            return look;
    return kLooks[0];
}

constexpr int kCell = 4;    // width of a page
constexpr int kRow = 16;    // height of a segment, the gap below it included
constexpr int kLeft = 56;   // room for its number
constexpr int kTop = 48;    // room for the title
constexpr int kLegend = 28; // room below

bool isAlike(const HeapReport::Page& a, const HeapReport::Page& b) {
    return a.state == b.state && a.pool == b.pool && a.used == b.used && a.total == b.total;
}

// Adjacent pages that look alike.
void appendCells(std::string& svg, const HeapReport::Segment& segment, std::size_t first, std::size_t end, int y) {
    const HeapReport::Page& page = segment.pages[first];
    const Look& look = lookOf(page.state);
    append(svg, "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" fill=\"%s\"",
           kLeft + static_cast<int>(first) * kCell, y, static_cast<int>(end - first) * kCell, kRow - 4,
           look.colour.data());
    if (page.state != State::kInPool) {
        append(svg, "><title>%s</title></rect>\n", look.meaning.data());
        return;
    }
    const double share = page.total == 0 ? 0.0 : static_cast<double>(page.used) / page.total;
    append(svg, " fill-opacity=\"%.2f\"><title>%s pool %d: %d of %d used</title></rect>\n", 0.2 + 0.8 * share,
           segment.servesPages ? "page" : "block", page.pool, page.used, page.total);
}

} // namespace

std::string heapReportText(const HeapReport& report) {
    std::string text;
    append(text, "heap at 0x%llx: %zu segment%s\n", static_cast<unsigned long long>(report.address),
           report.segments.size(), report.segments.size() == 1 ? "" : "s");
    append(text, "reserved %zu bytes, committed %zu, resident %zu, waiting %zu\n", report.reservedBytes,
           report.committedBytes, report.residentBytes, report.waitingBytes);
    append(text, "%-6s %6s %8s %10s %10s %14s\n", "pool", "unit", "pages", "used", "free", "asked");
    for (const HeapReport::Pool& pool : report.pools) {
        append(text, "%-5s%2d %6zu %8zu %10zu %10zu ", pool.servesPages ? "page" : "block", pool.number, pool.unitBytes,
               pool.pages, pool.usedBlocks, pool.freeBlocks);
        if (pool.askedBytes)
            append(text, "%14zu\n", *pool.askedBytes);
        else
            append(text, "%14s\n", "unknown");
    }
    return text;
}

std::string heapReportSvg(const HeapReport& report) {
    const int width = kLeft + static_cast<int>(HeapReport::kPagesPerSegment) * kCell + 8;
    const int rows = static_cast<int>(report.segments.size());
    const int height = kTop + rows * kRow + kLegend;
    std::string svg;
    append(svg, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" font-family=\"sans-serif\"",
           width, height);
    append(svg, " font-size=\"11\">\n<rect width=\"%d\" height=\"%d\" fill=\"#fafafa\"/>\n", width, height);
    append(svg, "<text x=\"8\" y=\"18\" font-size=\"14\">Heap at 0x%llx</text>\n",
           static_cast<unsigned long long>(report.address));
    append(svg,
           "<text x=\"8\" y=\"36\">%d segments of 1 MiB, a cell for each page; committed %zu KiB, resident %zu KiB, "
           "waiting %zu KiB</text>\n",
           rows, report.committedBytes / 1024, report.residentBytes / 1024, report.waitingBytes / 1024);
    int y = kTop;
    for (const HeapReport::Segment& segment : report.segments) {
        append(svg, "<text x=\"8\" y=\"%d\">%zu</text>\n", y + 10, segment.number);
        for (std::size_t first = 0; first < segment.pages.size();) {
            std::size_t end = first + 1;
            while (end < segment.pages.size() && isAlike(segment.pages[first], segment.pages[end]))
                ++end;
            appendCells(svg, segment, first, end, y);
            first = end;
        }
        y += kRow;
    }
    int x = 8;
    for (const Look& look : kLooks) {
        append(svg, "<rect x=\"%d\" y=\"%d\" width=\"12\" height=\"12\" fill=\"%s\" stroke=\"#888888\"/>", x, y + 8,
               look.colour.data());
        append(svg, "<text x=\"%d\" y=\"%d\">%s</text>\n", x + 16, y + 18, look.meaning.data());
        x += 36 + static_cast<int>(look.meaning.size()) * 6;
    }
    svg += "</svg>\n";
    return svg;
}

} // namespace tq
