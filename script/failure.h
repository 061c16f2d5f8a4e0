#pragma once

#include "host/error.h"
#include "script/syntax.h"

#include <string>

namespace script
{

/// What went wrong in a program, and where: "photo.bas:3:14: expected a value".
class Failure : public standin::Error
{
public:
    Failure(const std::string& file, Place place, const std::string& text)
        : Error(file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " + text),
          where(place),
          what_(text)
    {
    }

    Place place() const
    {
        return where;
    }
    /// Without the place.
    const std::string& text() const
    {
        return what_;
    }

private:
    Place where;
    std::string what_;
};

} // namespace script
