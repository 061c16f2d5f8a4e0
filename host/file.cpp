#include "host/file.h"

#include "host/error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace standin
{

namespace
{

namespace fs = std::filesystem;

/// The plug-in fits into one piece: tests load it thousands of times.
constexpr std::size_t pieceSize = 1 << 20;

std::string lastError()
{
    return errno == 0 ? "" : std::string(": ") + std::strerror(errno);
}

/// A file that is written to. All functions are false, with `errno`, when they fail.
class OpenFile
{
public:
    OpenFile() = default;
    ~OpenFile()
    {
        close();
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool open(const fs::path& path, int flags)
    {
        constexpr mode_t forAll = 0666;
        descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, forAll);
        return descriptor >= 0;
    }

    bool write(std::span<const std::uint8_t> bytes) const
    {
        while (!bytes.empty())
        {
            const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
            if (written < 0 && errno != EINTR)
                return false;
            bytes = bytes.subspan(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
        }
        return true;
    }

    /// Only here do some file systems tell that there was no room.
    bool close()
    {
        return descriptor < 0 || ::close(std::exchange(descriptor, -1)) == 0;
    }

    int descriptor = -1;
};

/// A file that is to take the place of another, and is gone unless it does.
class Unfinished
{
public:
    explicit Unfinished(const fs::path& wantedPlace)
        : place(wantedPlace),
          name(place.parent_path() / (".unfinished-" + std::to_string(::getpid())))
    {
    }
    ~Unfinished()
    {
        if (named)
            ::unlink(name.c_str());
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    bool write(std::span<const std::uint8_t> bytes)
    {
        return open() && file.write(bytes);
    }

    bool takePlace()
    {
        std::error_code unknown;
        const fs::perms old = fs::status(place, unknown).permissions();
        if (!unknown && ::fchmod(file.descriptor, static_cast<mode_t>(old)) != 0)
            return false;
        if (!giveName() || !file.close() || ::rename(name.c_str(), place.c_str()) != 0)
            return false;
        named = false;
        return true;
    }

private:
    /// Of a file without a name nothing stays, whatever happens; not all file systems have such.
    bool open()
    {
        const fs::path folder = place.has_parent_path() ? place.parent_path() : ".";
        if (file.open(folder, O_TMPFILE))
            return true;
        if (errno != EOPNOTSUPP && errno != EISDIR)
            return false;
        ::unlink(name.c_str());
        named = file.open(name, O_CREAT | O_EXCL);
        return named;
    }

    bool giveName()
    {
        if (named)
            return true;
        ::unlink(name.c_str());
        const std::string link = "/proc/self/fd/" + std::to_string(file.descriptor);
        named = ::linkat(AT_FDCWD, link.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
        return named;
    }

    const fs::path place;
    const fs::path name;
    bool named = false;
    OpenFile file;
};

/// Devices, pipes and what the process itself holds open are not.
bool isReplaceable(const fs::path& path)
{
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    if (fs::exists(status) && !fs::is_regular_file(status))
        return false;
    const fs::path folder = fs::canonical(path.has_parent_path() ? path.parent_path() : ".", ignored);
    return !folder.string().starts_with("/proc/");
}

/// What a path leads to in the end; it need not exist.
fs::path followed(fs::path path)
{
    constexpr int most = 40;
    std::error_code ignored;
    for (int count = 0; count < most && fs::is_symlink(path, ignored) && isReplaceable(path); ++count)
        path = path.parent_path() / fs::read_symlink(path, ignored);
    return path;
}

bool writeTo(const fs::path& path, std::span<const std::uint8_t> bytes)
{
    if (!isReplaceable(path))
    {
        OpenFile file;
        return file.open(path, O_APPEND) && file.write(bytes) && file.close();
    }
    // A name is replaced without asking for the right to change what bears it.
    if (::access(path.c_str(), W_OK) != 0 && errno != ENOENT)
        return false;
    Unfinished file(path);
    return file.write(bytes) && file.takePlace();
}

} // namespace

std::vector<std::uint8_t> readFile(const std::string& path)
{
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::vector<std::uint8_t> bytes;
    while (file)
    {
        const std::size_t known = bytes.size();
        bytes.resize(known + pieceSize);
        file.read(reinterpret_cast<char*>(bytes.data() + known), pieceSize);
        bytes.resize(known + static_cast<std::size_t>(file.gcount()));
    }
    if (!file.eof())
        throw Error("cannot read " + path + lastError());
    return bytes;
}

std::string readText(const std::string& path)
{
    const std::vector<std::uint8_t> bytes = readFile(path);
    return {bytes.begin(), bytes.end()};
}

void writeFile(const std::string& path, std::span<const std::uint8_t> bytes)
{
    errno = 0;
    if (!writeTo(followed(path), bytes))
        throw Error("cannot write " + path + lastError());
}

} // namespace standin
