/// \file
/// What a plug-in registers, as lines of text, and what is wrong with it.
#pragma once

#include "host/calls/registry.h"

#include <string>
#include <vector>

namespace standin
{

/// Everything registered, in its order: "class PictureSepiaQVR, 64 bytes", "extension Picture" or "global",
/// and indented below each what belongs to it: "    method Run as boolean, on consoles".
std::vector<std::string> catalogueLines(const Registered& registered);

/// What is wrong with what a plug-in has registered with a host of a version, a line each: what differs from
/// the catalogue, which consists of the lines above for a new host, and records that the host's layout does
/// not allow.
std::vector<std::string> registrationFaults(const Registered& registered, double version,
                                            const std::vector<std::string>& catalogue);

} // namespace standin
