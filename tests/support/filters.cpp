#include "tests/support/filters.h"

void setRectangle(standin::Instance& filter, const reference::FilterRectangle& rectangle)
{
    filter.set("MinX", rectangle.minX);
    filter.set("MinY", rectangle.minY);
    filter.set("MaxX", rectangle.maxX);
    filter.set("MaxY", rectangle.maxY);
}

reference::FilterRectangle randomRectangle(Random& random, int width, int height)
{
    if (random.onceIn(3))
        return {};
    return {random.coordinate(width), random.coordinate(height), random.coordinate(width),
            random.coordinate(height)};
}

reference::Picture freshPicture(const standin::Picture& source)
{
    return {source.width(), source.height(), reference::untouched};
}

std::string filterText(const standin::Instance& filter, const standin::Picture& source,
                       const std::string& settings)
{
    std::string text = filter.definition().name + " of a picture in " +
                       std::string(nameOf(source.storage())) + " with " + settings;
    for (const char* property : {"MinX", "MinY", "MaxX", "MaxY"})
        text += std::string(", ") + property + " " + filter.get(property).describe();
    return text;
}

void expectCloseReleasesPictures(TestHost& host, standin::Instance filter,
                                 const std::function<void(standin::Instance&)>& expectKept, SourceLine line)
{
    const testing::ScopedTrace trace = line.trace("closing");
    const standin::Picture source = host.newPicture(9, 9);
    const standin::Picture result = runFilter(filter, source);
    for (int times = 0; times < 3; ++times)
    {
        filter.call("Close");
        EXPECT_TRUE(filter.get("SourcePicture").picture().isNil());
        EXPECT_TRUE(filter.get("DestinationPicture").picture().isNil());
        EXPECT_EQ(source.referenceCount(), 1);
        EXPECT_EQ(result.referenceCount(), 1);
    }
    expectKept(filter);
    EXPECT_FALSE(runFilter(filter, source).isNil()) << "it works again after closing";
    filter = standin::Instance();
    host.expectBalanced("after the instance");
    EXPECT_EQ(source.referenceCount(), 1);
}

standin::Picture runFilter(standin::Instance& filter, const standin::Picture& source)
{
    filter.set("SourcePicture", source);
    const standin::Value result = filter.call("Run");
    EXPECT_FALSE(result.exception().has_value());
    const standin::Picture destination = filter.get("DestinationPicture").picture();
    EXPECT_EQ(result.boolean(), !destination.isNil());
    return destination;
}
