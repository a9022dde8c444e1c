#include "files/Files.h"

#include <TqOsBase/diag/ErrorStatus.h>

#include <cstdint>
#include <stdexcept>

namespace files {

namespace fs = std::filesystem;

namespace {

// One clear line for a buffer that did not get its file.
[[noreturn]] void failToOpen(const fs::path& path, const char* purpose, Lumo::ErrorStatus status) {
    std::string reason = "status " + std::to_string(status);
    std::error_code ignored;
    if (fs::is_directory(path, ignored))
        reason = "it is a directory";
    else if (status == Lumo::eFileNotAccessible)
        reason = fs::exists(path, ignored) ? "permission denied" : "no such file";
    else if (status == Lumo::eFileOpenFailed)
        reason = "the system refused it";
    throw std::runtime_error("cannot open " + path.string() + " for " + purpose + ": " + reason);
}

} // namespace

File openInput(const fs::path& path) {
    Lumo::ErrorStatus status = Lumo::eOk;
    File file(createFileIStreamBuf(path.wstring().c_str(), &status, TqIO::kAccessRead, TqIO::kShareDenyNone,
                                   TqIO::kOpenExisting));
    if (status != Lumo::eOk || file->fileName() == nullptr)
        failToOpen(path, "reading", status);
    return file;
}

File openOutput(const fs::path& path) {
    Lumo::ErrorStatus status = Lumo::eOk;
    File file(createFileOStreamBuf(path.wstring().c_str(), &status, TqIO::kAccessWrite, TqIO::kShareDenyNone,
                                   TqIO::kCreateAlways, kBufferSize));
    if (status != Lumo::eOk || file->fileName() == nullptr)
        failToOpen(path, "writing", status);
    return file;
}

void write(TqFileStreamBuf& file, std::string_view text) {
    file.writeBytes(reinterpret_cast<const unsigned char*>(text.data()), static_cast<std::uint32_t>(text.size()));
}

void abandon(TqFileStreamBuf& file) {
    try {
        file.close();
    } catch (const wchar_t*) {
    }
}

std::string narrowed(const wchar_t* reason) {
    std::string text;
    for (; *reason != 0; ++reason)
        text += static_cast<char>(*reason);
    return text;
}

} // namespace files
