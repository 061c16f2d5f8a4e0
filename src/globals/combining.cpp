#include "globals/combining.h"

#include "editor/walks.h"

namespace qvr::combining
{

namespace
{

bool sameSize(const PictureReader& first, const PictureReader& second)
{
    return first.width == second.width && first.height == second.height;
}

} // namespace

REALpictureStruct* CombinePicturesQVR(REALpictureStruct* red, REALpictureStruct* blue,
                                      REALpictureStruct* green)
{
    PictureReader redReader;
    PictureReader greenReader;
    PictureReader blueReader;
    PictureWriter writer;
    if (!redReader.open(red) || !greenReader.open(green) || !blueReader.open(blue) ||
        !sameSize(redReader, greenReader) || !sameSize(redReader, blueReader) ||
        !writer.openNew(redReader.width, redReader.height))
        return nullptr;
    mapBlock(
        writer, wholeBlock(redReader),
        [](auto reds, auto greens, auto blues) {
            return reds.withChannel(Channel::Green, greens).withChannel(Channel::Blue, blues);
        },
        redReader, greenReader, blueReader);
    return writer.RenderPictureWriter();
}

REALpictureStruct* MergePicture(REALpictureStruct* source1, REALpictureStruct* source2)
{
    PictureReader reader1;
    PictureReader reader2;
    PictureWriter writer;
    if (!reader1.open(source1) || !reader2.open(source2) || !sameSize(reader1, reader2) ||
        !writer.openNew(reader1.width, reader1.height))
        return nullptr;
    mapBlock(
        writer, wholeBlock(reader1), [](auto first, auto second) { return larger(first, second); }, reader1,
        reader2);
    return writer.RenderPictureWriter();
}

} // namespace qvr::combining
