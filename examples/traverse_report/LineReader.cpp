#include "LineReader.h"

#include <algorithm>

namespace {

constexpr std::uint64_t kBlock = 65536;

}

bool LineReader::fill() {
    const auto size = static_cast<std::uint32_t>(std::min(m_left, kBlock));
    m_block.resize(size);
    m_at = 0;
    m_in.readBytes(reinterpret_cast<unsigned char*>(m_block.data()), size);
    m_left -= size;
    return size != 0;
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
