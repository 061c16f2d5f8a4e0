#pragma once

namespace standin
{
class Host;
}

namespace cli
{

/// Prints everything that the plug-in has registered: as a user would declare it, or as JSON.
void list(const standin::Host& host, bool json);

} // namespace cli
