#pragma once

#include "script/environment.h"

#include <string>

namespace cli
{

/// Why a call that is about to be made may give nil, or false for a picture that cannot be used: what can be
/// known from outside. "ReplaceRedChannelQVR gave nil" can be told then: ": red is nil".
std::string reasonForNil(const script::PluginCall& call, standin::Kind kind);

/// What is wrong with a picture's size; empty: nothing.
std::string faultOfSize(int width, int height);

} // namespace cli
