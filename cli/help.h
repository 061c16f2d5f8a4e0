#pragma once

#include "host/host.h"

#include <string>

namespace cli
{

/// Prints what docs/reference says of a method or a class, its declarations and its example. Throws
/// standin::Error for other names.
void help(const standin::Host& host, const std::string& name);

} // namespace cli
