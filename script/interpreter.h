/// \file
/// Runs programs of the host's language on a stand-in host, whose plug-in they call by declaration. Nothing
/// here knows any of the plug-in's methods.
#pragma once

#include "host/host.h"
#include "script/builtins.h"
#include "script/environment.h"
#include "script/failure.h"
#include "script/syntax.h"
#include "script/value.h"

#include <functional>
#include <string>
#include <vector>

namespace script
{

/// Runs a program to its end. Throws Failure for the first thing that goes wrong; an exception of the
/// language is one, with its class and its message. Everything that the program made is gone then.
void run(const Program& program, standin::Host& host, const Environment& environment);

/// Gives the contents of what a call names with "@", as the type that is declared there.
using FileReader = std::function<standin::Value(const std::string& name, standin::Type type)>;

/// What a call from `parseCall` finds around it.
struct CallContext
{
    std::string receiverName; ///< "photo": whose members the call can name as they are
    Value receiver;           ///< nil: the call names none
    FileReader read;
};

/// A variable that a byref parameter wrote to: one that the call named, or the parameter's own.
struct NamedValue
{
    std::string name;
    standin::Value value;
};

struct CallOutcome
{
    const standin::RegisteredMethod* method = nullptr; ///< null where the plug-in has not given the result
    std::string name;                                  ///< what gave the result, as it is declared
    /// The declared type of the result; nothing for assignments, and for methods without result.
    standin::Type type = standin::Type::Nothing;
    standin::Value result;
    std::vector<NamedValue> variables; ///< in the order in which they were passed
};

/// Makes a call; throws CallFailure for what goes wrong.
CallOutcome call(const Program& program, standin::Host& host, const Environment& environment,
                 const CallContext& context);

/// Whether calls on a picture can name this as it is.
bool isPictureMember(const standin::Registered& registered, const std::string& name);

} // namespace script
