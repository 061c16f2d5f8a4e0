#include "host/file.h"

#include "host/error.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace standin
{

namespace
{

/// The plug-in fits into one piece: tests load it thousands of times.
constexpr std::size_t pieceSize = 1 << 20;

std::string lastError()
{
    return errno == 0 ? "" : std::string(": ") + std::strerror(errno);
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
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file)
        throw Error("cannot write " + path + lastError());
}

} // namespace standin
