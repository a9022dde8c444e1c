#pragma once

#include "reference/Testing.h"

#include <unistd.h> // mkdtemp, on macOS

namespace reference {

/// A fresh folder that goes with the object.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tqtestXXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_path = pattern;
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path(const std::string& name) const { return (m_path / name).string(); }
    /// The folder's own path is ASCII; the name may be anything.
    std::wstring wide(const std::wstring& name) const { return m_path.wstring() + L"/" + name; }
    std::wstring wide(const std::string& name) const { return wide(std::wstring(name.begin(), name.end())); }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }

private:
    std::filesystem::path m_path;
};

} // namespace reference
