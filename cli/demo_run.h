/// \file
/// Runs an example as readers would, and keeps what there is to be seen of it.
#pragma once

#include "cli/demo_catalogue.h"
#include "cli/histogram.h"
#include "host/call_timer.h"
#include "host/host.h"
#include "media/image.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cli
{

struct TimedCall
{
    std::string method;
    standin::CallTimes times;
};

/// What comes of an example but pictures.
struct DemoOutcome
{
    std::vector<std::string> printed;
    std::vector<TimedCall> calls; ///< of the method or class that it is about
    std::vector<Curve> curves;    ///< red, green and blue, where there are counters
    bool opensPhoto = false;
};

/// What examples find in the place of photo.jpg and speech.wav.
struct DemoInputs
{
    media::Image photo; ///< with four channels
    std::string sound;
    std::optional<standin::Storage> storage; ///< of the photograph as a picture
};

/// Takes the pictures that an example saves, under the names that it gives them.
using TakePicture = std::function<void(const std::string& name, const media::Image& image)>;

/// Runs the example of a method or class. Throws script::Failure for what goes wrong in it, and
/// standin::Error when it never calls what it is about, or shows nothing.
DemoOutcome runExample(standin::Host& host, const DemoInputs& inputs, const std::string& name,
                       const Example& example, const TakePicture& take);

} // namespace cli
