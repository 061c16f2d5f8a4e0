/// \file
/// What pictures, pixels and the hosts' enumerations look like in messages. GoogleTest finds these functions
/// by the namespace of the type, and prints bytes without them.
#pragma once

#include "host/host.h"
#include "tests/reference/picture.h"

#include <iosfwd>
#include <string>

using standin::sizeText;

/// "red 1, green 2, blue 3, alpha 4".
std::string pixelText(const reference::Pixel& pixel);

namespace standin
{

void PrintTo(Artefact artefact, std::ostream* out);
void PrintTo(Kind kind, std::ostream* out);
void PrintTo(Storage storage, std::ostream* out);
void PrintTo(const Pixel& pixel, std::ostream* out);
void PrintTo(const Picture& picture, std::ostream* out);
void PrintTo(const Value& value, std::ostream* out);

} // namespace standin

namespace reference
{

void PrintTo(const Pixel& pixel, std::ostream* out);
void PrintTo(const Picture& picture, std::ostream* out);

} // namespace reference
