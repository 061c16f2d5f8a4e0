#pragma once

#include "fuzz/input.h"
#include "host/host.h"

namespace fuzz
{

/// A host as the input wants it: kind, version, storage and rows of new pictures, loops of the plug-in. It
/// takes the one copy of the plug-in that all hosts of the process use in turn, as if just loaded: what an
/// input does depends on nothing that ran before it.
class FuzzHost : public standin::Host
{
public:
    explicit FuzzHost(Input& input);
    /// With something else about it.
    FuzzHost(Input& input, const std::function<void(standin::Options&)>& change);

    /// Whether its new pictures are such as its kind of host has. What comes of others depends on what the
    /// plug-in has seen before.
    bool isUsual() const;
    /// The storage of pictures that the plug-in makes here.
    standin::Storage newStorage() const
    {
        return options().storageOfNewPictures();
    }
};

} // namespace fuzz
