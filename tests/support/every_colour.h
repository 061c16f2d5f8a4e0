/// \file
/// Every colour there is, and what a method makes of it, at the speed of memory: these pictures have 2^24
/// pixels.
#pragma once

#include "tests/support/pictures.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

/// A picture of this size has every colour once. Under the sanitizers there is one row in 16 of it, which is
/// every 16th colour.
inline constexpr int colourColumns = 4096;
inline constexpr int colourRows = sanitized ? 256 : 4096;

/// The colours are shuffled, so that the pixels of a vector differ in all channels; in a second order, so
/// that colours meet each other in pairs. Spare bytes are anything.
enum class Order
{
    First,
    Second
};

/// `rows` rows of the picture, from row `top` on.
reference::Picture colourBand(Order order, int top, int rows);
/// The pixels of a band whose column and row have this parity in sum; the others are grey, so that no colour
/// has a neighbour.
reference::Picture isolatedColours(const reference::Picture& band, int parity);
/// Black where they are coloured and white where they are grey: the rectangle around a pixel without coloured
/// neighbours is that pixel.
reference::Picture maskOfIsolated(const reference::Picture& isolated);
/// The whole picture on a host, or what becomes of its bands.
standin::Picture
everyColour(standin::Host& host, standin::Storage storage, Order order = Order::First,
            const std::function<reference::Picture(const reference::Picture& band)>& change = nullptr);

/// The whole picture's bytes R, G, B behind each other.
std::string packedColours(Order order = Order::First);

/// What becomes of the pixels of both orders.
using ColourMap =
    std::function<reference::Picture(const reference::Picture& first, const reference::Picture& second)>;
/// The map of the whole picture, band by band: it may use nothing but a pixel's own colours.
/// The second pixels are only there when they are needed.
enum class Pairs
{
    Needed,
    NotNeeded
};
reference::Picture mappedColours(const ColourMap& map, Pairs pairs);

/// Where a result is not what is wanted, and of which colour it was made; empty when it is. The result's
/// pixels are overwritten, so that the next one in their memory starts from nothing.
std::string differenceFrom(const reference::Picture& wanted, standin::Picture& got);

/// Where a picture of the first order is not what assigning the second as its embedded mask makes of it.
std::string differenceFromAssignedMask(const standin::Picture& got, bool swap);

/// How far a colour's channels lie apart.
int spreadOf(reference::Pixel pixel);
/// All the colours whose spread is one of these.
std::vector<reference::Pixel> coloursOfSpread(std::int64_t lowest, std::int64_t highest);
/// A picture of these pixels, the last row filled up with the last of them.
standin::Picture pictureOfColours(standin::Host& host, standin::Storage storage,
                                  std::span<const reference::Pixel> pixels, int columns = colourColumns);
