// Files are replaced as a whole or not at all.
#include "host/error.h"
#include "host/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

namespace fs = std::filesystem;

class WrittenFile : public testing::Test
{
protected:
    WrittenFile() : folder(fs::temp_directory_path() / ("pictureqvr-file-" + std::to_string(getpid())))
    {
        fs::create_directories(folder);
    }
    ~WrittenFile() override
    {
        fs::remove_all(folder);
    }
    WrittenFile(const WrittenFile&) = delete;
    WrittenFile& operator=(const WrittenFile&) = delete;

    void write(const std::string& name, const std::string& contents) const
    {
        standin::writeFile((folder / name).string(),
                           {reinterpret_cast<const std::uint8_t*>(contents.data()), contents.size()});
    }

    std::string read(const std::string& name) const
    {
        return standin::readText((folder / name).string());
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder))
            found.push_back(entry.path().filename());
        return found;
    }

    /// What a disk does on which no more has room.
    static void withLittleRoom(const std::function<void()>& action)
    {
        rlimit before = {};
        getrlimit(RLIMIT_FSIZE, &before);
        rlimit little = before;
        little.rlim_cur = room;
        setrlimit(RLIMIT_FSIZE, &little);
        action();
        setrlimit(RLIMIT_FSIZE, &before);
    }

    /// What this process finds from now on is what some file systems are like: no file is without a name.
    static bool forgoFilesWithoutNames()
    {
        constexpr auto flags = offsetof(seccomp_data, args) + 2 * sizeof(seccomp_data::args[0]);
        std::array<sock_filter, 6> filter{{
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3),
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, flags),
            BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, O_TMPFILE & ~O_DIRECTORY, 0, 1),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EOPNOTSUPP),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        }};
        const sock_fprog program{filter.size(), filter.data()};
        return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
               prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 &&
               open(fs::temp_directory_path().c_str(), O_WRONLY | O_TMPFILE, 0600) < 0;
    }

    /// The status of a process that does this.
    static int inProcess(const std::function<void()>& action)
    {
        const pid_t process = fork();
        if (process == 0)
        {
            try
            {
                action();
            }
            catch (const std::exception& failure)
            {
                ADD_FAILURE() << failure.what();
            }
            _exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        waitpid(process, &status, 0);
        return status;
    }

    static constexpr std::size_t room = 4096;
    const fs::path folder;
    const std::string large = std::string(2 * room, 'x');
};

TEST_F(WrittenFile, HoldsWhatWasWritten)
{
    write("file", large);
    EXPECT_EQ(read("file"), large);
    write("file", "");
    EXPECT_EQ(read("file"), "");
    EXPECT_THAT(names(), testing::ElementsAre("file"));
}

TEST_F(WrittenFile, IsWholeOrNotThere)
{
    write("old", "what was there");
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    withLittleRoom([&] {
        EXPECT_THROW(write("old", large), standin::Error);
        EXPECT_THROW(write("new", large), standin::Error);
    });
    (void)std::signal(SIGXFSZ, before);
    EXPECT_EQ(read("old"), "what was there");
    EXPECT_THAT(names(), testing::ElementsAre("old"));
}

TEST_F(WrittenFile, LeavesNothingOfAProcessThatIsKilled)
{
    write("old", "what was there");
    const int status = inProcess([&] {
        (void)std::signal(SIGXFSZ, SIG_DFL);
        withLittleRoom([&] { write("old", large); });
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(read("old"), "what was there");
    EXPECT_THAT(names(), testing::ElementsAre("old"));
}

TEST_F(WrittenFile, NeedsNoFileSystemOfFilesWithoutNames)
{
    write("old", "what was there");
    fs::permissions(folder / "old", fs::perms(0601));
    constexpr int notPossible = 77;
    const int status = inProcess([&] {
        if (!forgoFilesWithoutNames())
            _exit(notPossible);
        write("old", large);
        write("new", large);
        (void)std::signal(SIGXFSZ, SIG_IGN);
        withLittleRoom([&] {
            EXPECT_THROW(write("old", "other" + large), standin::Error);
            EXPECT_THROW(write("newer", large), standin::Error);
        });
    });
    if (WIFEXITED(status) && WEXITSTATUS(status) == notPossible)
        GTEST_SKIP() << "this system filters no calls";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(read("old"), large);
    EXPECT_EQ(fs::status(folder / "old").permissions(), fs::perms(0601));
    EXPECT_EQ(read("new"), large);
    EXPECT_THAT(names(), testing::UnorderedElementsAre("old", "new"));
}

TEST_F(WrittenFile, KeepsThePermissionsOfTheOldOne)
{
    const mode_t before = umask(0027);
    write("file", "old");
    umask(before);
    EXPECT_EQ(fs::status(folder / "file").permissions(), fs::perms(0640));
    fs::permissions(folder / "file", fs::perms(0601));
    write("file", "new");
    EXPECT_EQ(read("file"), "new");
    EXPECT_EQ(fs::status(folder / "file").permissions(), fs::perms(0601));
}

TEST_F(WrittenFile, LiesWhereLinksLead)
{
    fs::create_directory(folder / "below");
    fs::create_symlink("below/file", folder / "link");
    fs::create_symlink("link", folder / "linkToLink");
    for (const std::string& contents : {"first", "second"})
    {
        write("linkToLink", contents);
        EXPECT_EQ(read("below/file"), contents);
        EXPECT_TRUE(fs::is_symlink(folder / "link"));
        EXPECT_TRUE(fs::is_symlink(folder / "linkToLink"));
    }
}

TEST_F(WrittenFile, CanBeAPipeOrADevice)
{
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::string arrived;
    std::thread reader([&] { arrived = read("pipe"); });
    write("pipe", large);
    reader.join();
    EXPECT_EQ(arrived, large);
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    standin::writeFile("/dev/null", std::vector<std::uint8_t>{1});
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_THROW(standin::writeFile("/dev/full", std::vector<std::uint8_t>{1}), standin::Error);
}

/// What a shell has opened for a program is written to, and not put beside it.
TEST_F(WrittenFile, CanBeAnOpenFile)
{
    std::ofstream open(folder / "output");
    const int status = inProcess([&] {
        ASSERT_NE(freopen((folder / "output").c_str(), "a", stdout), nullptr);
        standin::writeFile("/dev/stdout", std::vector<std::uint8_t>{'1'});
        standin::writeFile("/proc/self/fd/1", std::vector<std::uint8_t>{'2'});
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(read("output"), "12");
    open << "!" << std::flush;
    EXPECT_EQ(read("output"), "!2");
}

TEST_F(WrittenFile, TellsWhyItCannotBeWritten)
{
    const auto expectError = [&](const std::string& path, const std::string& reason) {
        try
        {
            standin::writeFile(path, {});
            ADD_FAILURE() << path;
        }
        catch (const standin::Error& error)
        {
            EXPECT_EQ(error.what(), "cannot write " + path + ": " + reason);
        }
    };
    expectError(folder, "Is a directory");
    expectError(folder / "none" / "file", "No such file or directory");
    expectError("", "No such file or directory");
    write("file", "");
    expectError(folder / "file" / "file", "Not a directory");
}

} // namespace
