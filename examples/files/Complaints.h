#pragma once

#include <cstdio>
#include <string>

namespace files {

/// What is wrong with an input, on standard error: the first twenty complaints, then only their number.
class Complaints {
public:
    void add(const std::string& text) {
        if (++m_count <= kShown)
            std::fprintf(stderr, "%s\n", text.c_str());
    }
    /// After the last one.
    void finish() const {
        if (m_count > kShown)
            std::fprintf(stderr, "... and %llu more\n", m_count - kShown);
    }
    unsigned long long count() const { return m_count; }

private:
    static constexpr unsigned long long kShown = 20;
    unsigned long long m_count = 0;
};

} // namespace files
