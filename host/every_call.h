/// \file
/// Calls of everything that a plug-in has registered, made from the registration itself.
#pragma once

#include "host/host.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace standin
{

/// Makes an argument: of the parameter's or property's name ("self" for the picture that a method belongs to,
/// "" for an assigned value), of its type, at its position.
using ArgumentMaker = std::function<Value(Host&, const std::string& name, Type type, int position)>;

/// A call with all that it needs.
struct PreparedCall
{
    /// Does the call once. An assignment gives the picture assigned to.
    std::function<Value()> run;
    /// What has been left in variables and in the filter's "DestinationPicture", by name.
    std::function<std::vector<std::pair<std::string, Value>>()> leavings;
};

/// A call that can be made.
struct RegisteredCall
{
    /// The declaration, with the class in front and what is done with it behind.
    std::string text;
    Type result = Type::Nothing;
    /// Makes the arguments; a filter is made and given all its properties.
    std::function<PreparedCall(Host&, const ArgumentMaker&)> prepare;
};

/// Every method called, every assignable one assigned to; every filter made, every accessor of it used, every
/// method called, and let go.
std::vector<RegisteredCall> everyCall(const Registered& registered);

/// An argument that leads into the loops of calls with pictures of at least 41 x 6, for parameters that are
/// neither picture, string nor colour.
Value tellingArgument(Host& host, const std::string& name, Type type, int position);

} // namespace standin
