/// \file
/// The way of pictures between the host and the references.
#pragma once

#include "host/host.h"
#include "tests/reference/picture.h"

#include <optional>

namespace reference
{

/// A host picture of these pixels, spare bytes as they are.
standin::Picture upload(standin::Host& host, const Picture& picture,
                        std::optional<standin::Storage> storage = std::nullopt);
/// The pixels of a host picture, spare bytes as they are: with storages of few colours not what was uploaded.
Picture download(const standin::Picture& picture);

/// The spare byte that a storage holds for a wanted alpha: 255 stands for what writers leave.
std::uint8_t storedAlpha(std::uint8_t wanted, const standin::StorageTraits& traits);

} // namespace reference
