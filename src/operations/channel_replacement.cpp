#include "operations/channel_replacement.h"

#include "editor/walks.h"
#include "runtime/exceptions.h"

namespace qvr::channelReplacement
{

namespace
{

REALpictureStruct* replaceChannel(REALpictureStruct* self, REALpictureStruct* channelPicture, Channel channel)
{
    if (channelPicture == nullptr)
    {
        raiseNilObjectException("The channel picture is nil.");
        return nullptr;
    }
    PictureReader selfReader;
    PictureReader channelReader;
    if (!selfReader.open(self) || !channelReader.open(channelPicture))
        return nullptr;
    if (channelReader.height < selfReader.height || channelReader.width < selfReader.width)
        return nullptr;
    PictureWriter writer;
    if (!writer.openNew(selfReader.width, selfReader.height))
        return nullptr;
    mapBlock(
        writer, wholeBlock(selfReader),
        [channel](auto pixels, auto others) { return pixels.withChannel(channel, others); }, selfReader,
        channelReader);
    return writer.RenderPictureWriter();
}

} // namespace

REALpictureStruct* ReplaceRedChannel(REALpictureStruct* self, REALpictureStruct* channel)
{
    return replaceChannel(self, channel, Channel::Red);
}

REALpictureStruct* ReplaceGreenChannel(REALpictureStruct* self, REALpictureStruct* channel)
{
    return replaceChannel(self, channel, Channel::Green);
}

REALpictureStruct* ReplaceBlueChannel(REALpictureStruct* self, REALpictureStruct* channel)
{
    return replaceChannel(self, channel, Channel::Blue);
}

} // namespace qvr::channelReplacement
