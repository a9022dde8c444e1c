#include "stream/StreamTest.h"

#include <sys/socket.h>

namespace {

using namespace streamtest;

// Another process that opens a file, holds it as it is told, and answers what it sees. One byte each way per step.
class OtherProcess {
public:
    explicit OtherProcess(const std::string& path) {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends), 0);
        m_child = ::fork();
        if (m_child == 0)
            serve(path.c_str());
        ::close(m_ends[1]);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;
    ~OtherProcess() {
        ::close(m_ends[0]);
        ::waitpid(m_child, nullptr, 0);
    }

    /// 'r' / 'w' take a read or write lock, 'u' releases it, 'g' asks what a write lock would meet: answers F_UNLCK,
    /// F_RDLCK or F_WRLCK; -1 for a failure, or for a lock on a part of the file.
    int ask(char command) {
        signed char answer = -3;
        return ::write(m_ends[0], &command, 1) == 1 && ::read(m_ends[0], &answer, 1) == 1 ? answer : -3;
    }

private:
    [[noreturn]] void serve(const char* path) {
        ::close(m_ends[0]);
        const int file = ::open(path, O_RDWR | O_CREAT, 0666);
        for (char command = 0; ::read(m_ends[1], &command, 1) == 1;) {
            struct flock lock = {};
            lock.l_whence = SEEK_SET;
            lock.l_type = static_cast<short>(command == 'r' ? F_RDLCK : command == 'u' ? F_UNLCK : F_WRLCK);
            const bool isDone = ::fcntl(file, command == 'g' ? F_GETLK : F_SETLK, &lock) == 0;
            const bool isWhole = lock.l_start == 0 && lock.l_len == 0;
            const auto answer = static_cast<signed char>(!isDone || !isWhole ? -1 : command == 'g' ? lock.l_type : 0);
            if (::write(m_ends[1], &answer, 1) != 1)
                break;
        }
        ::_exit(0);
    }

    int m_ends[2] = {};
    pid_t m_child = -1;
};

class FileLock : public testing::Test {
protected:
    void SetUp() override { writeFile(m_folder.path("f"), bytesOf("0123456789")); }

    BufPtr openExclusively(const std::wstring& name) {
        m_status = Lumo::kOk;
        return BufPtr(createFileIOStreamBuf(name.c_str(), &m_status, TqIO::kAccessReadWrite, TqIO::kShareDenyWrite,
                                            TqIO::kOpenExisting));
    }

    const TempFolder m_folder;
    const std::wstring m_name = m_folder.wide("f");
    OtherProcess m_other{m_folder.path("f")};
    Lumo::ErrorStatus m_status = Lumo::kOk;
    const CStringList& m_registry = TqFileStreamBufImpl::m_cstrAlreadyOpenFiles;
};

TEST_F(FileLock, EveryOpenReadableFileIsReadLockedUntilItCloses) {
    for (const TqIO::ShareMode share : {TqIO::kShareDenyWrite, TqIO::kShareDenyNone})
        for (const auto create : {createFileStreamBuf, createFileIStreamBuf, createFileIOStreamBuf}) {
            EXPECT_EQ(m_other.ask('g'), F_UNLCK);
            const BufPtr buf(create(m_name.c_str(), &m_status, TqIO::kAccessRead, share, TqIO::kOpenExisting));
            ASSERT_EQ(m_status, 0);
            EXPECT_EQ(m_other.ask('g'), F_RDLCK);
            EXPECT_EQ(m_other.ask('w'), -1);
            buf->close();
        }
    EXPECT_EQ(m_other.ask('w'), 0);
    TqFileStreamBufImpl buf;
    EXPECT_EQ(buf.open(m_name.c_str(), TqIO::kAccessRead, TqIO::kShareDenyNone, TqIO::kOpenExisting), 0)
        << "only an exclusive open minds the lock of another";
}

TEST_F(FileLock, ExclusiveOpenIsRefusedWhileAnotherProcessHoldsAnyLock) {
    for (const char lock : {'r', 'w'}) {
        ASSERT_EQ(m_other.ask(lock), 0);
        const BufPtr refused = openExclusively(m_name);
        EXPECT_TRUE(m_status == 433 && refused->fileHandle() == nullptr);
        refused->close();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(refused->fileHandle()), ~std::uintptr_t{0});
        EXPECT_TRUE(m_registry.IsEmpty()) << "a refused name is not registered";
        try {
            tq::openUpdate(m_name, TqIO::kShareDenyWrite);
            ADD_FAILURE() << "opened";
        } catch (const std::system_error& refusal) {
            EXPECT_TRUE(refusal.code().value() == EBUSY &&
                        std::strstr(refusal.what(), "by another process") != nullptr);
        }
        ASSERT_EQ(m_other.ask('u'), 0);
        const BufPtr granted = openExclusively(m_name);
        EXPECT_EQ(m_status, 0);
        EXPECT_EQ(m_other.ask('g'), F_RDLCK);
    }
}

TEST_F(FileLock, SecondExclusiveOpenInTheProcessIsRefusedAndKeepsTheLockOfTheFirst) {
    writeFile(m_folder.path("g"), {});
    const BufPtr first = openExclusively(m_name);
    ASSERT_EQ(m_registry.GetCount(), 1);
    EXPECT_EQ(m_registry.GetHead(), m_name);
    EXPECT_EQ(openExclusively(m_name)->fileHandle(), nullptr);
    EXPECT_EQ(m_status, 72);
    openExclusively(m_folder.wide("g"));
    EXPECT_EQ(m_status, 0);
    EXPECT_EQ(m_other.ask('g'), F_RDLCK) << "the refused open must not cost the first its lock";
    EXPECT_EQ(m_registry.GetCount(), 1);
    TqFileStreamBufImpl third;
    const auto open = [&](TqIO::AccessMode access, TqIO::ShareMode share) {
        return static_cast<int>(third.open(m_name.c_str(), access, share, TqIO::kOpenExisting));
    };
    EXPECT_EQ(open(TqIO::kAccessWrite, TqIO::kShareDenyWrite), 0) << "not an exclusive open";
    EXPECT_EQ(open(TqIO::kAccessReadWrite, TqIO::kShareDenyNone), 0) << "not an exclusive open";
    first->close();
    EXPECT_TRUE(m_registry.IsEmpty());
    EXPECT_EQ(open(TqIO::kAccessReadWrite, TqIO::kShareDenyWrite), 0);
    EXPECT_EQ(open(TqIO::kAccessReadWrite, TqIO::kShareDenyWrite), 0) << "the buffer's own file is closed first";
    EXPECT_EQ(open(TqIO::kAccessRead, TqIO::kShareDenyNone), 0);
    EXPECT_TRUE(m_registry.IsEmpty());
}

} // namespace
