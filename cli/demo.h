#pragma once

#include "cli/host_choice.h"

#include <string>

#include "build_info.h"

namespace cli
{

/// What a user asks for with `pictureqvr demo`.
struct DemoRequest
{
    std::string photo = "/usr/share/backgrounds/mate/nature/LadyBird.jpg";
    std::string sound = "/usr/share/sounds/alsa/Front_Center.wav";
    std::string source = build::sourceDirectory; ///< where examples/ and docs/reference/index.md are
    std::string folder;
};

/// Runs the examples and writes index.html with their pictures into a folder, which is made if need be. Tells
/// on stderr how far it is. Throws standin::Error when an example fails or a file cannot be read or written.
void demo(const HostChoice& choice, const DemoRequest& request);

} // namespace cli
