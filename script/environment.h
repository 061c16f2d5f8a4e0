#pragma once

#include "host/host.h"
#include "media/image.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace script
{

/// A call of the plug-in. Variables stand among the arguments as such.
struct PluginCall
{
    const standin::RegisteredMethod& method;
    standin::Picture picture;   ///< that it is made on, or nil
    standin::Instance instance; ///< likewise
    const standin::Arguments& arguments;
    const standin::Value* assigned; ///< null where nothing is
};

/// What a program finds around it. Everything can be put in its place: tests and pages run programs with
/// files of their own.
struct Environment
{
    /// Where the file lies that a program calls so; may throw standin::Error.
    std::function<std::string(const std::string& name)> path = [](const std::string& name) { return name; };
    /// Reads the image file at a path, with four channels; may throw standin::Error.
    std::function<media::Image(const std::string& path)> readImage = [](const std::string& file) {
        return media::readImage(file, 4);
    };
    /// Takes each picture that the program saves, as it looks, in the place of the file at the path.
    std::function<void(const std::string& path, const media::Image& image)> saveImage;
    /// Takes each line that the program prints, without its end.
    std::function<void(const std::string& line)> print = [](const std::string&) {};
    /// Sees each call of the plug-in before it is made. What it gives, if anything, is called with the
    /// result, when variables have their new values.
    std::function<std::function<void(const standin::Value& result)>(const PluginCall& call)> watch;
    /// What args(0), args(1) ... give: the program itself, then what it was started with.
    std::vector<std::string> arguments;
    /// How loaded pictures are stored; nothing: as the host stores new ones.
    std::optional<standin::Storage> storage;
    /// Statements and rounds of loops after which a program is stopped; 0: never.
    std::uint64_t steps = 0;
    /// The bytes of the largest picture, block or string that a program can make.
    std::size_t largestObject = std::size_t{512} << 20;
};

} // namespace script
