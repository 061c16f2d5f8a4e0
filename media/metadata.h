#pragma once

#include "media/reader.h"

namespace media
{

/// What an image file says about its pictures.
struct Metadata
{
    /// Where the first row and column belong, as EXIF numbers it: 1 (where they are) to 8.
    int orientation = 1;
    int frames = 1;
};

/// Files of unknown kinds and damaged ones say nothing.
Metadata metadataOf(ByteView file);

/// Whether a JPEG file's code tables fit into the decoder's, and all that are used are there. Files of other
/// kinds have none.
bool hasSoundTables(ByteView file);

} // namespace media
