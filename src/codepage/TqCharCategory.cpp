#include "platform/StaticInit.h"

#include <TqOsBase/codepage/TqCharCategory.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

template <std::size_t Count>
using Puncts = std::array<wchar_t, Count>;

// The entries of the lists together, ascending.
template <std::size_t... Counts>
consteval auto sorted(const Puncts<Counts>&... lists) {
    Puncts<(Counts + ...)> all{};
    auto end = all.begin();
    ((end = std::copy(lists.begin(), lists.end(), end)), ...);
    std::sort(all.begin(), all.end());
    return all;
}

constexpr Puncts<29> kLeft = sorted(Puncts<29>{
    L'(',   L'[',   L'{',   0x3010, 0x300A, 0xFF08, 0xFFE5, L'+',   0xFE35, 0x201A,
    0x201E, L'$',   0x2039, 0x00A3, 0x00A4, 0x00A5, 0x20AC, 0x2116, 0xFF04, 0xFFE1,
    0xFFE5, 0xFF08, 0xFF3B, 0xFF5B, 0xFE59, 0xFE5B, 0xFE5D, 0xFE69, 0x3008,
});
constexpr Puncts<13> kRight = sorted(Puncts<13>{
    L')',
    L']',
    L'}',
    0xFF09,
    0x300B,
    0x3011,
    0xFF3D,
    0xFF5D,
    0xFE5A,
    0xFE5C,
    0xFE5E,
    0x203A,
    0x3009,
});
constexpr Puncts<45> kNormal = sorted(Puncts<45>{
    L',',   L'?',   L'!',   L'.',   L';',   L':',   0x3001, 0x3002, 0x3003, 0xFF0C, 0xFF0E, 0xFF1A,
    0xFF1B, 0xFF1F, 0xFF01, 0x2026, L'-',   0xFE50, 0xFE51, 0xFE52, 0xFE54, 0xFE55, 0xFE56, 0xFE57,
    L'%',   0x2030, 0x2025, 0x00B0, L'/',   L'|',   0x00B0, 0x2010, 0x2013, 0x2014, 0x2032, 0x2033,
    0x2035, 0x00A2, 0xFFE0, 0x2103, 0x2109, 0xFF05, 0xFF09, 0xFFE0, 0xFE6A,
});
constexpr Puncts<10> kQuotation = sorted(Puncts<10>{
    L'"',
    0x2018,
    0x2019,
    0x201C,
    0x201D,
    L'\'',
    0x00AB,
    0x00BB,
    0x2039,
    0x203A,
});
constexpr Puncts<97> kAll = sorted(kLeft, kRight, kNormal, kQuotation);

} // namespace

constexpr TqCharCategory::TqCharCategory(Unbuilt /*unused*/) noexcept {}

TQ_INIT_FIRST constinit TqCharCategory TqCharCategory::s_instance{Unbuilt()};

namespace {

// Fills it while the program still has one thread.
struct FillAtLoad {
    FillAtLoad() { TqCharCategory::s_instance.allPuncts(); }
};

TQ_INIT_FIRST FillAtLoad g_fillAtLoad;

} // namespace

TqCharCategory::TqCharCategory() {
    build();
}

void TqCharCategory::build() {
    initLeftPuncts();
    initRightPuncts();
    initNormalPuncts();
    initQuotationPuncts();
    m_allPuncts.assign(kAll.begin(), kAll.end());
}

// The process-wide object alone can be asked before it is built: by a static initialiser that runs before ours.
const TqCharCategory& TqCharCategory::built() const {
    if (this == &s_instance && m_allPuncts.empty())
        s_instance.build();
    return *this;
}

void TqCharCategory::initLeftPuncts() {
    m_leftPuncts.assign(kLeft.begin(), kLeft.end());
}

void TqCharCategory::initRightPuncts() {
    m_rightPuncts.assign(kRight.begin(), kRight.end());
}

void TqCharCategory::initNormalPuncts() {
    m_normalPuncts.assign(kNormal.begin(), kNormal.end());
}

void TqCharCategory::initQuotationPuncts() {
    m_quotationPuncts.assign(kQuotation.begin(), kQuotation.end());
}
