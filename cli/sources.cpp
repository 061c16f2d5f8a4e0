#include "cli/sources.h"

#include "cli/progress.h"
#include "script/files.h"

#include <iostream>
#include <unistd.h>

namespace cli
{

std::string pathOf(const std::string& argument)
{
    if (argument != standardStream)
        return argument;
    if (isatty(STDIN_FILENO) != 0)
        throw standin::Error("\"-\" is standard input, which is a terminal here");
    return "/dev/stdin";
}

void warn(const std::string& text, bool quiet)
{
    if (!quiet)
        std::cerr << "pictureqvr: warning: " << text << "\n";
}

Source readSource(standin::Host& host, const std::string& argument, std::optional<standin::Storage> storage,
                  bool quiet)
{
    constexpr int rgba = 4;
    const std::string path = pathOf(argument);
    const media::Image image = [&] {
        const Phase phase("reading " + path, quiet);
        return media::readImage(path, rgba);
    }();
    if (image.frames > 1)
        warn(path + " holds " + std::to_string(image.frames) + " pictures, of which the first is used",
             quiet);
    return {path, script::pictureOf(host, image, storage), image.hasAlpha};
}

} // namespace cli
