/// \file
/// What the demo shows: one table of calls, each with a caption that says what is to be seen.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace cli
{

/// What a card shows beside the values that the call gives.
enum class Shows
{
    Result,           ///< the resulting picture, if there is one
    Receiver,         ///< the picture that the method belongs to, after the call
    ReceiverWithAlpha ///< the same over a chequered ground, as transparent as its alpha byte and its mask say
};

/// One call. "@name" in it means one of the demo's things: "photo", "mirrored", "page", "crop", "disc",
/// "small", "sound", "curve", "negative", "identity", and what an earlier sample has kept.
struct Sample
{
    std::string family;
    std::string call;
    std::string caption;
    std::string receiver = "photo"; ///< the call gets a copy of its own
    Shows shows = Shows::Result;
    std::string keepAs = {};   ///< name that the result, or a changed receiver, is kept under
    std::string alsoShow = {}; ///< one of the demo's pictures, shown when the call gives none
};

/// A colour with channels of 0 to 255.
using Colour = std::array<double, 3>;

/// One run of a filter class.
struct FilterSample
{
    std::string className;
    std::string caption;
    std::vector<std::string> settings;
    /// Fills the table of colours, for classes that have one; shown as `tableText`.
    std::function<Colour(Colour)> table = nullptr;
    std::string tableText = {};
};

/// The calls, families one after the other, for a photograph of this size.
std::vector<Sample> demoSamples(int width, int height);

std::vector<FilterSample> demoFilters();

} // namespace cli
