// Files are replaced as a whole or not at all.
#include "host/error.h"
#include "host/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
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
    const pid_t process = fork();
    if (process == 0)
    {
        (void)std::signal(SIGXFSZ, SIG_DFL);
        withLittleRoom([&] { write("old", large); });
        _exit(0);
    }
    int status = 0;
    waitpid(process, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(read("old"), "what was there");
    EXPECT_THAT(names(), testing::ElementsAre("old"));
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
    const pid_t process = fork();
    if (process == 0)
    {
        if (freopen((folder / "output").c_str(), "a", stdout) == nullptr)
            _exit(1);
        standin::writeFile("/dev/stdout", std::vector<std::uint8_t>{'1'});
        standin::writeFile("/proc/self/fd/1", std::vector<std::uint8_t>{'2'});
        _exit(0);
    }
    int status = -1;
    waitpid(process, &status, 0);
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
