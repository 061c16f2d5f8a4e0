#pragma once

#include "host/error.h"
#include "script/syntax.h"

#include <cstddef>
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

/// What went wrong in a call on the command line.
class CallFailure : public standin::Error
{
public:
    /// `column` counts from 1, in bytes.
    CallFailure(const std::string& message, const std::string& call, std::size_t column);

    /// The call, and below it a mark at what is wrong; lines of it that cannot be shown so are not.
    const std::string& picture() const
    {
        return picture_;
    }

private:
    std::string picture_;
};

} // namespace script
