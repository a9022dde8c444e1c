#pragma once

#include <TqOsBase/diag/Exceptions.h>
#include <TqOsBase/stream/FileStreamBuf.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace streamtest {

using Bytes = std::vector<unsigned char>;

/// What a call threw, as one text: the layer's own text, "status <n>", or "" when it did not throw.
template <class Call>
std::wstring thrownBy(const Call& call) {
    try {
        call();
    } catch (const TqException& e) {
        EXPECT_EQ(e.m_pInner, nullptr);
        EXPECT_FALSE(e.m_flag);
        EXPECT_EQ(e.m_nLine, 0);
        return std::wstring(L"TqException ") + e.m_pszFile;
    } catch (const wchar_t* text) {
        return text;
    } catch (Lumo::ErrorStatus status) {
        return L"status " + std::to_wstring(static_cast<int>(status));
    } catch (const std::exception&) {
        return L"std::exception";
    }
    return L"";
}

/// A call and the text that it must throw.
using Refusal = std::pair<std::wstring, std::function<void()>>;

template <class Refusals>
void expectRefusals(const Refusals& refusals) {
    for (const Refusal& refusal : refusals)
        EXPECT_EQ(thrownBy(refusal.second), refusal.first) << "refusal " << &refusal - std::begin(refusals);
}

using BufPtr = std::unique_ptr<TqFileStreamBuf>;

inline const std::wstring kOutOfBuffer = L"TqException Out of stream buffer!";
inline const std::wstring kEndOfBuffer = L"TqException End of stream buffer!";
inline const std::wstring kEndOfFile = L"End of file!";
inline const std::wstring kWriteError = L"Write file error!";
inline const std::wstring kInternalError = L"File internal error!";
inline const std::wstring kOutOfFile = L"Out of file stream buffer!";

/// A fresh folder that goes with the object.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tqstreamXXXXXX").string();
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
    /// ASCII names only.
    std::wstring wide(const std::string& name) const {
        const std::string full = path(name);
        return std::wstring(full.begin(), full.end());
    }

private:
    std::filesystem::path m_path;
};

inline void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

inline Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

inline Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

} // namespace streamtest
