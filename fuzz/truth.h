/// \file
/// What a call must give, from the references: of every method that has one.
#pragma once

#include "host/host.h"

#include <functional>

namespace fuzz
{

/// Whether the plug-in works in a picture's own memory; other pictures the host draws for it.
bool locks(const standin::Host& host, standin::Storage storage);
/// The bytes of a pixel that the plug-in reads or writes in place of those of `storage`.
int bytesRead(const standin::Host& host, standin::Storage storage);

/// A call that is about to be made. Variables stand among the arguments as such.
struct Call
{
    const standin::Host& host;
    const standin::RegisteredMethod& method;
    standin::Picture self; ///< nil for global methods
    const standin::Arguments& arguments;
};

/// Holds the call's result, and what it has changed, against the truth; calls `fail` where they differ.
using Check = std::function<void(const standin::Value& result)>;

/// The check for a call, made of the state before it; empty where there is no reference. Only for hosts,
/// pictures and blocks that are as they should be.
Check checkOf(const Call& call);
/// The same for an assignment to an assignable method of a picture.
Check checkOfAssignment(const Call& call, const standin::Value& value);
/// The same for "Run" of a filter.
Check checkOfRun(const standin::Host& host, const standin::Instance& filter);

/// The pictures and blocks that a call may change.
std::vector<standin::Picture> changedPictures(const Call& call);
std::vector<standin::MemoryBlock> changedBlocks(const Call& call);

} // namespace fuzz
