/// \file
/// Copies that may go around the cache.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace qvr
{

/// Whether so many bytes are better stored around the cache: they would not stay in it, and storing that way
/// saves reading the destination first.
bool isStreamedSize(int64_t bytes);

/// Copies `size` bytes between blocks that do not overlap, around the cache when `streamed`.
void copyBytes(uint8_t* destination, const uint8_t* source, size_t size, bool streamed);

} // namespace qvr
