#pragma once

#include "host/host.h"
#include "media/cube.h"

#include <cstdint>
#include <string>
#include <vector>

namespace cli
{

/// The table of a .cube file, as PictureLut3DQVR can hold it.
class CubeLook
{
public:
    /// Whose table it is.
    static constexpr const char* className = "PictureLut3DQVR";

    explicit CubeLook(const std::string& file);

    void putInto(standin::Instance& filter) const;

    /// A program of the host's language that does the same.
    std::string program() const;

    /// How far the class's results are from the file's own table, tried on every colour.
    std::string accuracy(standin::Host& host) const;

private:
    std::string path;
    media::Cube cube;
    std::vector<std::int64_t> thousandths; ///< red slowest, then green, blue, and the component
};

} // namespace cli
