#include "base/CharacterLocale.h"
#include "base/FileName.h"
#include "platform/File.h"
#include "stream/StreamBytes.h"

#include <TqOsBase/stream/TqFileSystem.h>

#include <cerrno>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using namespace tq;

namespace {

constexpr unsigned kDirectoryBit = 0x4000;
constexpr std::uint64_t kNoSize = ~std::uint64_t{0};

bool isEmpty(const wchar_t* path) {
    return path == nullptr || *path == L'\0';
}

// False, with errno set, when the path has no such form.
bool toMultibyte(const wchar_t* path, std::string& out) {
    detail::useUtf8Characters();
    const int error = detail::utf8FileNameError(path, out);
    if (error != 0)
        errno = error;
    return error == 0;
}

} // namespace

int TqFileSystem::waccess(const wchar_t* path, int mode) {
    std::string name;
    return toMultibyte(path, name) ? ::access(name.c_str(), mode) : -1;
}

int TqFileSystem::wstat(const wchar_t* path, struct stat* buf) {
    std::string name;
    return toMultibyte(path, name) ? ::stat(name.c_str(), buf) : -1;
}

bool TqFileSystem::isFileExisting(const wchar_t* path) {
    struct stat info = {};
    return !isEmpty(path) && waccess(path, F_OK) == 0 && wstat(path, &info) == 0 && (info.st_mode & kDirectoryBit) == 0;
}

bool TqFileSystem::accessFile(const wchar_t* path, TqIO::AccessMode mode) {
    std::string name;
    if (isEmpty(path) || !detail::toUtf8FileName(path, name))
        return false;
    const bool toRead = (mode & TqIO::kAccessRead) != 0;
    const bool toWrite = (mode & TqIO::kAccessWrite) != 0;
    return platform::canAccess(name.c_str(), toRead, toWrite) && !platform::isDirectory(name.c_str());
}

std::uint64_t TqFileSystem::getFileSize(const wchar_t* path) {
    struct stat info = {};
    return wstat(path, &info) == 0 ? static_cast<std::uint64_t>(info.st_size) : kNoSize;
}

TqFileStreamBuf* TqFileSystem::createFileBuf(const wchar_t* path, TqIO::AccessMode access, TqIO::ShareMode share,
                                             TqIO::CreationDisposition creation) {
    if (isEmpty(path))
        throw Lumo::kEmptyPath;
    Lumo::ErrorStatus status = Lumo::kOk;
    TqFileStreamBuf* buffer = (access & TqIO::kAccessWrite) != 0
                                  ? createFileOStreamBuf(path, &status, access, share, creation, detail::kWriteBehind)
                                  : createFileIStreamBuf(path, &status, access, share, creation);
    if (status == Lumo::kOk)
        return buffer;
    destoryFileIOStreamBuf(buffer);
    return nullptr;
}

bool TqFileSystem::isDirectory(const wchar_t*) {
    return false;
}

bool TqFileSystem::createFile(const wchar_t*) {
    return false;
}

bool TqFileSystem::deleteFile(const wchar_t*) {
    return false;
}

bool TqFileSystem::renameFile(const wchar_t*, const wchar_t*) {
    return false;
}

std::uint64_t TqFileSystem::getCreationTime(const wchar_t*) {
    return 0;
}

std::uint64_t TqFileSystem::getAccessingTime(const wchar_t*) {
    return 0;
}

std::uint64_t TqFileSystem::getModificationTime(const wchar_t*) {
    return 0;
}

std::uint64_t TqFileSystem::getFileSize(void*) {
    return 0;
}

bool TqFileSystem::createDirectory(const wchar_t*) {
    return false;
}

bool TqFileSystem::deleteDirectory(const wchar_t*) {
    return false;
}

bool TqFileSystem::setCurrentDirectory(const wchar_t*) {
    return false;
}

int TqFileSystem::getCurrentDirectory(wchar_t*) {
    return 0;
}

int TqFileSystem::getOSDirectory(wchar_t*) {
    return 0;
}

int TqFileSystem::getSystemDirectory(wchar_t*) {
    return 0;
}

int TqFileSystem::getTempDirectory(wchar_t*) {
    return 0;
}

int TqFileSystem::getRunDirectory(wchar_t*) {
    return 0;
}

std::uint64_t TqFileSystem::getDiskAvailableSpace(const wchar_t*) {
    return 0;
}

std::uint64_t TqFileSystem::getDiskFreeSpace(const wchar_t*) {
    return 0;
}

std::uint64_t TqFileSystem::getDiskTotalSpace(const wchar_t*) {
    return 0;
}
