#include "LineReader.h"

#include <algorithm>

namespace {

constexpr std::size_t kBlock = 65536;

}

bool LineReader::fill() {
    m_block.resize(kBlock);
    m_block.resize(m_in.read(m_block.data(), kBlock));
    m_at = 0;
    return !m_block.empty();
}

bool LineReader::next() {
    m_line.clear();
    m_isCut = false;
    bool any = false;
    for (bool ended = false; !ended && (m_at < m_block.size() || fill());) {
        any = true;
        const std::size_t end = std::min(m_block.find('\n', m_at), m_block.size());
        m_line.append(m_block, m_at, end - m_at);
        ended = end < m_block.size();
        m_at = end + (ended ? 1 : 0);
        m_isCut = m_isCut || m_line.size() > kMaxLine;
        m_line.resize(std::min(m_line.size(), kMaxLine));
    }
    if (!m_line.empty() && m_line.back() == '\r')
        m_line.pop_back();
    m_number += any ? 1 : 0;
    return any;
}
