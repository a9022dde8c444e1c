#include "stream/StreamTest.h"

#include <TqOsBase/stream/TqFileSystem.h>

#include <cerrno>
#include <clocale>
#include <set>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using namespace streamtest;

const std::wstring kForeign = L"\u00E9\u4E2D\U0001F600";
const std::string kForeignBytes = "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80";
constexpr std::uint64_t kNoSize = ~std::uint64_t{0};

void makeSocket(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
}

TEST(FileSystem, EveryKindOfPath) {
    const TempFolder folder;
    writeFile(folder.path("file"), bytesOf("12345"));
    writeFile(folder.path(kForeignBytes), bytesOf("123"));
    ::mkdir(folder.path("folder").c_str(), 0777);
    ::mkfifo(folder.path("pipe").c_str(), 0666);
    makeSocket(folder.path("socket"));
    ::symlink("missing", folder.path("link").c_str());
    struct Row {
        std::wstring name;
        bool isThere;
        bool isExisting;   // by the one bit of the mode that is tested
        bool isAccessible; // no directory
        std::uint64_t size;
    };
    const Row rows[] = {
        {L"file", true, true, true, 5},
        {kForeign, true, true, true, 3},
        {std::wstring(3000, L'/') + L"file", true, true, true, 5},
        {L"folder", true, false, false, TqFileSystem::getFileSize(folder.wide("folder").c_str())},
        {L"pipe", true, true, true, 0},
        {L"socket", true, false, true, 0},
        {L"link", false, false, false, kNoSize},
        {L"missing", false, false, false, kNoSize},
        {L"file/none", false, false, false, kNoSize},
        {std::wstring(L"file") + static_cast<wchar_t>(0x110000), false, false, false, kNoSize},
    };
    for (const char* locale : {"C", "C.UTF-8"}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(std::string(locale) + " row " + std::to_string(&row - rows));
            const std::wstring path = folder.wide("") + row.name;
            struct stat info = {};
            std::setlocale(LC_ALL, locale);
            EXPECT_EQ(TqFileSystem::accessFile(path.c_str(), TqIO::kAccessReadWrite), row.isAccessible);
            EXPECT_EQ(TqFileSystem::accessFile(path.c_str(), TqIO::kAccessNone), row.isAccessible);
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), locale);
            EXPECT_EQ(TqFileSystem::waccess(path.c_str(), F_OK) == 0, row.isThere);
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), "C.UTF-8");
            std::setlocale(LC_ALL, locale);
            EXPECT_EQ(TqFileSystem::wstat(path.c_str(), &info) == 0, row.isThere);
            EXPECT_EQ(row.isThere ? static_cast<std::uint64_t>(info.st_size) : kNoSize, row.size);
            EXPECT_EQ(TqFileSystem::isFileExisting(path.c_str()), row.isExisting);
            EXPECT_EQ(TqFileSystem::getFileSize(path.c_str()), row.size);
        }
    }
    std::setlocale(LC_ALL, "C");
}

TEST(FileSystem, NoPathIsAFailure) {
    struct stat info = {};
    for (const wchar_t* path : {L"", static_cast<const wchar_t*>(nullptr)}) {
        errno = 0;
        EXPECT_EQ(TqFileSystem::waccess(path, 0), -1);
        EXPECT_EQ(errno, path == nullptr ? EINVAL : ENOENT);
        EXPECT_EQ(TqFileSystem::wstat(path, &info), -1);
        EXPECT_FALSE(TqFileSystem::isFileExisting(path));
        EXPECT_FALSE(TqFileSystem::accessFile(path, TqIO::kAccessNone));
        EXPECT_EQ(TqFileSystem::getFileSize(path), kNoSize);
        for (const TqIO::AccessMode access : {TqIO::kAccessRead, TqIO::kAccessWrite})
            EXPECT_EQ(
                thrownBy([&] { TqFileSystem::createFileBuf(path, access, TqIO::kShareDenyNone, TqIO::kCreateAlways); }),
                L"status 365");
    }
    std::setlocale(LC_ALL, "C");
}

TEST(FileSystem, BuffersByAccess) {
    const TempFolder folder;
    writeFile(folder.path("file"), bytesOf("12345"));
    ::mkdir(folder.path("folder").c_str(), 0777);
    const auto create = [&](const char* name, TqIO::AccessMode access, TqIO::CreationDisposition creation) {
        return BufPtr(TqFileSystem::createFileBuf(folder.wide(name).c_str(), access, TqIO::kShareDenyNone, creation));
    };
    const BufPtr input = create("file", TqIO::kAccessRead, TqIO::kOpenExisting);
    ASSERT_NE(dynamic_cast<TqFileIStreamBuf*>(input.get()), nullptr);
    EXPECT_EQ(input->length(), 5U);
    for (const TqIO::AccessMode access : {TqIO::kAccessWrite, TqIO::kAccessReadWrite}) {
        const BufPtr output = create("file", access, TqIO::kOpenExisting);
        ASSERT_NE(dynamic_cast<TqFileOStreamBuf*>(output.get()), nullptr);
        EXPECT_EQ(output->shareMode(), TqIO::kShareDenyNone);
        EXPECT_EQ(create("missing", access, TqIO::kOpenExisting), nullptr);
    }
    EXPECT_EQ(create("missing", TqIO::kAccessRead, TqIO::kOpenExisting), nullptr);
    EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
    // What opening throws is no status: the buffer comes back, without a file.
    const BufPtr nothing = create("folder", TqIO::kAccessRead, TqIO::kOpenExisting);
    ASSERT_NE(nothing, nullptr);
    EXPECT_EQ(nothing->fileName(), nullptr);
}

template <class Result, class... Arguments>
void* callAndGiveAddress(Result (*function)(Arguments...), Arguments... arguments) {
    EXPECT_EQ(function(arguments...), Result{});
    return reinterpret_cast<void*>(function);
}

TEST(FileSystem, WhatIsNotProvidedDoesNothing) {
    using FS = TqFileSystem;
    const TempFolder folder;
    writeFile(folder.path("file"), bytesOf("12345"));
    const std::wstring path = folder.wide("file");
    const std::wstring other = folder.wide("other");
    const std::wstring all = folder.wide("");
    const std::string before = std::filesystem::current_path().string();
    std::set<void*> addresses;
    for (const auto question : {FS::isDirectory, FS::createFile, FS::deleteFile, FS::createDirectory,
                                FS::deleteDirectory, FS::setCurrentDirectory})
        for (const wchar_t* argument : {path.c_str(), other.c_str(), all.c_str()})
            addresses.insert(callAndGiveAddress<bool>(question, argument));
    addresses.insert(callAndGiveAddress<bool>(FS::renameFile, path.c_str(), other.c_str()));
    for (const auto question : {FS::getCreationTime, FS::getAccessingTime, FS::getModificationTime,
                                FS::getDiskAvailableSpace, FS::getDiskFreeSpace, FS::getDiskTotalSpace})
        addresses.insert(callAndGiveAddress<std::uint64_t>(question, path.c_str()));
    wchar_t out[] = L"#";
    for (const auto question : {FS::getCurrentDirectory, FS::getOSDirectory, FS::getSystemDirectory,
                                FS::getTempDirectory, FS::getRunDirectory})
        addresses.insert(callAndGiveAddress<int>(question, out));
    addresses.insert(callAndGiveAddress<std::uint64_t, void*>(FS::getFileSize, out));
    EXPECT_EQ(addresses.size(), 19U) << "each is a function of its own";
    EXPECT_STREQ(out, L"#");
    EXPECT_EQ(readFile(folder.path("file")), bytesOf("12345"));
    EXPECT_FALSE(std::filesystem::exists(folder.path("other")));
    EXPECT_EQ(std::filesystem::current_path().string(), before);
}

} // namespace
