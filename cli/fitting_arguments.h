#pragma once

#include "host/every_call.h"

#include <cstdint>
#include <string>
#include <vector>

namespace cli
{

/// Arguments for any call of a plug-in that reach what it has to do, with small pictures of one storage.
/// Remembers what it has handed out, and what that held.
class FittingArguments
{
public:
    FittingArguments(standin::Host& host, standin::Storage pictureStorage);

    standin::Value operator()(standin::Host& host, const std::string& name, standin::Type type, int position);
    /// The names of the pictures and memory blocks that do not hold what they held.
    std::vector<std::string> changed() const;
    /// Forgets what was handed out.
    void clear()
    {
        given.clear();
    }

private:
    struct Given
    {
        std::string name;
        standin::Value value;
        std::vector<std::uint8_t> held;
    };

    standin::Storage storage;
    standin::Picture whole;
    standin::Picture part; ///< the corner of `whole`
    standin::Value string; ///< `whole` as the plug-in packs it
    std::vector<Given> given;
};

} // namespace cli
