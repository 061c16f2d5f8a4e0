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

standin::Picture runFilter(standin::Instance& filter, const standin::Picture& source)
{
    filter.set("SourcePicture", source);
    const standin::Value result = filter.call("Run");
    EXPECT_FALSE(result.exception().has_value());
    const standin::Picture destination = filter.get("DestinationPicture").picture();
    EXPECT_EQ(result.boolean(), !destination.isNil());
    return destination;
}
