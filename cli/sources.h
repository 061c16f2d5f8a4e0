/// \file
/// Pictures that commands read, with what of their files is no part of the picture.
#pragma once

#include "host/host.h"

#include <optional>
#include <string>
#include <string_view>

namespace cli
{

/// How commands call standard input and standard output.
constexpr std::string_view standardStream = "-";

/// The file that an argument of a command means. Throws standin::Error for standard input from a terminal.
std::string pathOf(const std::string& argument);

/// A line on stderr that ends nothing.
void warn(const std::string& text, bool quiet);

struct Source
{
    std::string path;
    standin::Picture picture;
    bool hasAlpha = false; ///< some of it is not opaque
};

/// Reads an image, and warns of what is left of its file.
Source readSource(standin::Host& host, const std::string& argument, std::optional<standin::Storage> storage,
                  bool quiet);

} // namespace cli
