#pragma once

#include "cli/host_choice.h"

#include <string>

namespace cli
{

/// What a user asks for with `pictureqvr demo`.
struct DemoRequest
{
    std::string photo = "/usr/share/backgrounds/mate/nature/LadyBird.jpg";
    std::string sound = "/usr/share/sounds/alsa/Front_Center.wav";
    std::string folder;
};

/// Runs the samples and writes index.html with its pictures into a folder, which is made if need be. Tells on
/// stderr how far it is. Throws standin::Error when a sample fails or a file cannot be read or written.
void demo(const HostChoice& choice, const DemoRequest& request);

} // namespace cli
