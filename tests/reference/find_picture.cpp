#include "tests/reference/find_picture.h"

namespace reference
{

namespace
{

bool sameColour(const Pixel& a, const Pixel& b)
{
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

/// Steps through a picture's rows. The row that it stands on can be set back without its number knowing.
class RowCursor
{
public:
    explicit RowCursor(const Picture& source) : picture(source)
    {
    }

    void next()
    {
        ++number;
        row = number < picture.height ? number : 0;
    }

    const Pixel& at(int column) const
    {
        return picture.at(column, row);
    }

    int row = 0;

private:
    const Picture& picture;
    int number = 0;
};

bool sameColumns(const RowCursor& self, int column, const RowCursor& wanted, int from, int width)
{
    for (int i = from; i < width; ++i)
        if (!sameColour(self.at(column + i), wanted.at(i)))
            return false;
    return true;
}

} // namespace

std::optional<Position> findPicture(const Picture& self, const Picture& wanted)
{
    RowCursor here{self};
    RowCursor there{wanted};
    const Pixel key = wanted.at(0, 0);
    const int rows = self.height - wanted.height + 1;
    const int columns = self.width - wanted.width + 1;
    for (int counter = 0; counter < rows; ++counter)
    {
        const int startRow = here.row;
        for (int column = 0; column < columns; ++column)
        {
            if (!sameColour(self.at(column, startRow), key))
                continue;
            if (!sameColumns(here, column, there, 1, wanted.width))
                continue;
            here.next();
            there.next();
            bool matches = true;
            for (int further = 1; matches && further < wanted.height; ++further)
            {
                matches = sameColumns(here, column, there, 0, wanted.width);
                if (matches)
                {
                    here.next();
                    there.next();
                }
            }
            if (matches)
                return Position{column, counter};
            here.row = startRow;
            there.row = 0;
        }
        here.next();
    }
    return std::nullopt;
}

std::optional<Position> findPictureExhaustively(const Picture& self, const Picture& wanted)
{
    for (int top = 0; top + wanted.height <= self.height; ++top)
        for (int left = 0; left + wanted.width <= self.width; ++left)
        {
            bool matches = true;
            for (int y = 0; matches && y < wanted.height; ++y)
                for (int x = 0; matches && x < wanted.width; ++x)
                    matches = sameColour(self.at(left + x, top + y), wanted.at(x, y));
            if (matches)
                return Position{left, top};
        }
    return std::nullopt;
}

} // namespace reference
