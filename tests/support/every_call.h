/// \file
/// Calls of everything that the plug-in has registered, made from the registration itself.
#pragma once

#include "tests/reference/picture.h"
#include "tests/support/test_host.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Makes an argument: of the parameter's or property's name ("self" for the picture that a method belongs to,
/// "" for an assigned value), of its type, at its position.
using ArgumentMaker =
    std::function<standin::Value(standin::Host&, const std::string& name, standin::Type type, int position)>;

/// A call with all that it needs.
struct PreparedCall
{
    /// Does the call once. An assignment gives the picture assigned to.
    std::function<standin::Value()> run;
    /// What has been left in variables and in the filter's "DestinationPicture", by name.
    std::function<std::vector<std::pair<std::string, standin::Value>>()> leavings;
};

/// A call that can be made.
struct RegisteredCall
{
    /// The declaration, with the class in front and what is done with it behind.
    std::string text;
    standin::Type result = standin::Type::Nothing;
    /// Makes the arguments; a filter is made and given all its properties.
    std::function<PreparedCall(standin::Host&, const ArgumentMaker&)> prepare;
};

/// Every method called, every assignable one assigned to; every filter made, every accessor of it used, every
/// method called, and let go.
std::vector<RegisteredCall> everyCall(const standin::Registered& registered);

/// Arguments that lead into the loops, with every picture made by `makePicture`.
class TellingArguments
{
public:
    using PictureMaker =
        std::function<standin::Picture(standin::Host&, const reference::Picture& pixels, int position)>;

    /// `source` is at least 6 x 4.
    explicit TellingArguments(reference::Picture source, PictureMaker pictureMaker = {});
    standin::Value operator()(standin::Host& host, const std::string& name, standin::Type type,
                              int position) const;

private:
    reference::Picture pixels;
    PictureMaker makePicture;
};

/// A value as text, pixels and all.
std::string outcomeText(const standin::Value& value);
std::string outcomeText(const reference::Picture& picture);

/// Does a call, whose declaration is for messages, and gives its result.
using AroundCall =
    std::function<standin::Value(const std::string& call, const std::function<standin::Value()>& job)>;

/// Does every call with `source` as every picture and with telling arguments. What each call gave, and what
/// it left in variables and properties, is its second text.
std::vector<std::pair<std::string, std::string>> outcomesOfEveryCall(
    TestHost& host, const reference::Picture& source,
    const AroundCall& around = [](const std::string&, const auto& job) { return job(); });
