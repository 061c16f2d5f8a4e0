#pragma once

#include "host/calls/registry.h"

#include <string>
#include <vector>

namespace cli
{

/// "there is no class PictureSepia; did you mean PictureSepiaQVR?"
std::string unknownName(const std::string& kind, const std::string& name,
                        const std::vector<std::string>& known);

/// Of pictures' and of global methods.
std::vector<std::string> methodNames(const standin::Registered& registered);
std::vector<std::string> classNames(const standin::Registered& registered);

} // namespace cli
