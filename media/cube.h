/// \file
/// Colour tables in .cube files, as photographers and film makers pass them on.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace media
{

/// Red, green and blue; 0 to 1 from black to full.
using Levels = std::array<double, 3>;

/// The tables of a .cube file: one for each channel, one for all three together, or the one behind the other.
class Cube
{
public:
    /// Reads a file's text. Throws standin::Error as "PATH:LINE: REASON" for one that is none.
    Cube(std::string_view text, const std::string& path);

    const std::string& title() const
    {
        return name;
    }

    /// Where a level of one channel leads, by that channel's table and into the one for all three.
    struct Place
    {
        double level = 0;
        double fraction = 0;
        std::size_t corner = 0; ///< the entry below, as far as this channel decides
        std::size_t step = 0;   ///< from there to the next
    };
    Place placeOf(std::size_t channel, double level) const;

    /// What the colour at three places becomes. Between the entries of a channel's table lies a straight
    /// line, between those of all three a tetrahedron.
    Levels at(const std::array<Place, 3>& places) const;

private:
    friend class CubeReader;

    struct Table
    {
        int size = 0; ///< entries along each axis; 0: there is no such table
        Levels lowest{0, 0, 0};
        Levels highest{1, 1, 1};
        std::vector<Levels> entries;

        /// How far a level lies along an axis: whole entries, and what remains.
        std::size_t lowerEntry(double level, std::size_t channel, double& fraction) const;
    };

    std::string name;
    Table channels;
    Table all;
};

} // namespace media
