#pragma once

#include "tests/reference/picture.h"

namespace reference
{

enum class Channel
{
    Red,
    Green,
    Blue
};

/// The channel's value in a pixel.
std::uint8_t& level(Pixel& pixel, Channel channel);

/// `self` with one channel taken from the same place of `source`, which is at least as large.
Picture replaceChannel(const Picture& self, const Picture& source, Channel channel);

/// Each picture, all of the same size, gives the channel it is named after.
Picture combine(const Picture& red, const Picture& green, const Picture& blue);

/// The larger value of two pictures of the same size, channel by channel.
Picture merge(const Picture& first, const Picture& second);

} // namespace reference
