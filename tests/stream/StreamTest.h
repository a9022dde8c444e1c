#pragma once

#include "reference/Testing.h"

namespace streamtest {

using reference::TempFolder;
using std::uint32_t;
using std::uint64_t;
using Bytes = std::vector<unsigned char>;
using BufPtr = std::unique_ptr<TqFileStreamBuf>;

/// What a call threw, as one text: the layer's own text, "status <n>", or "" when it did not throw. That memory ran out
/// is passed on.
template <class Call>
std::wstring thrownBy(const Call& call) {
    try {
        call();
    } catch (const TqException& e) {
        EXPECT_FALSE(e.m_pInner || e.m_flag || e.m_nLine != 0);
        return std::wstring(L"TqException ") + e.m_pszFile;
    } catch (const wchar_t* text) {
        return text;
    } catch (Lumo::ErrorStatus status) {
        return L"status " + std::to_wstring(static_cast<int>(status));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        return L"std::exception";
    }
    return L"";
}

/// Each of the calls must throw this text.
inline void expectRefused(const std::wstring& text, std::initializer_list<std::function<void()>> calls) {
    for (const auto& call : calls)
        EXPECT_EQ(thrownBy(call), text) << "call " << &call - calls.begin();
}

inline const std::wstring kOutOfBuffer = L"TqException Out of stream buffer!";
inline const std::wstring kEndOfBuffer = L"TqException End of stream buffer!";
inline const std::wstring kEndOfFile = L"End of file!";
inline const std::wstring kWriteError = L"Write file error!";
inline const std::wstring kInternalError = L"File internal error!";
inline const std::wstring kOutOfFile = L"Out of file stream buffer!";

inline void writeFile(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary) << std::string(bytes.begin(), bytes.end());
}

inline Bytes readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

inline Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

/// Bytes that show where they belong.
inline Bytes pattern(std::size_t n) {
    Bytes bytes(n);
    for (std::size_t i = 0; i < n; ++i)
        bytes[i] = static_cast<unsigned char>(i * 7 + i / 251);
    return bytes;
}

/// The buffers for reading and writing: the one that writes at once, and the one that collects what is written.
enum Kind { kPlain, kOutput };

inline BufPtr openForUpdate(Kind kind, const std::wstring& name,
                            TqIO::CreationDisposition creation = TqIO::kCreateAlways,
                            TqIO::AccessMode access = TqIO::kAccessReadWrite) {
    const auto share = TqIO::kShareDenyNone;
    return BufPtr(kind == kPlain ? createFileIOStreamBuf(name.c_str(), nullptr, access, share, creation)
                                 : createFileOStreamBuf(name.c_str(), nullptr, access, share, creation, 64));
}

inline BufPtr openForInput(const std::wstring& name) {
    return BufPtr(
        createFileIStreamBuf(name.c_str(), nullptr, TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting));
}

} // namespace streamtest
