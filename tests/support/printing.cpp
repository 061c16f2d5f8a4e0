#include "tests/support/printing.h"

#include <ostream>

std::string pixelText(const reference::Pixel& pixel)
{
    return "red " + std::to_string(pixel.red) + ", green " + std::to_string(pixel.green) + ", blue " +
           std::to_string(pixel.blue) + ", alpha " + std::to_string(pixel.alpha);
}

namespace standin
{

void PrintTo(Artefact artefact, std::ostream* out)
{
    *out << nameOf(artefact);
}

void PrintTo(Kind kind, std::ostream* out)
{
    *out << nameOf(kind);
}

void PrintTo(Storage storage, std::ostream* out)
{
    *out << nameOf(storage);
}

void PrintTo(const Pixel& pixel, std::ostream* out)
{
    *out << pixelText(reference::Pixel{pixel.red, pixel.green, pixel.blue, pixel.alpha});
}

void PrintTo(const Picture& picture, std::ostream* out)
{
    *out << Value(picture).describe();
    if (!picture.isNil())
        *out << " in " << nameOf(picture.storage());
}

void PrintTo(const Value& value, std::ostream* out)
{
    *out << value.describe();
}

} // namespace standin

namespace reference
{

void PrintTo(const Pixel& pixel, std::ostream* out)
{
    *out << pixelText(pixel);
}

void PrintTo(const Picture& picture, std::ostream* out)
{
    *out << "picture of " << sizeText(picture.width, picture.height);
}

} // namespace reference
