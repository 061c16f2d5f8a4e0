/// \file
/// Brings a call's text and the declarations that the plug-in registered together. Nothing here knows any
/// method.
#pragma once

#include "cli/call_text.h"
#include "host/host.h"

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace cli
{

/// Gives the contents of what a call names with "@", as the type that is declared there.
using FileReader = std::function<standin::Value(const std::string& name, standin::Type type)>;

/// A variable that a byref parameter reads and writes.
struct Variable
{
    std::string name;
    standin::Value value;
};

/// A call whose arguments are values of the declared types.
class MethodCall
{
public:
    /// Chooses the overload as the host does. Throws standin::Error when none fits, naming what would, and
    /// passes on what `read` throws.
    MethodCall(const std::vector<const standin::RegisteredMethod*>& overloads, const CallText& text,
               const FileReader& read);

    const standin::RegisteredMethod& method() const
    {
        return *chosen;
    }
    const std::deque<Variable>& variables() const
    {
        return byrefs;
    }
    bool isAssignment() const
    {
        return assigned.has_value();
    }

    /// Each makes the call and gives its result; an exception that the call raises is thrown as
    /// standin::Error.
    standin::Value onPicture(standin::Host& host, const standin::Picture& receiver) const;
    standin::Value onInstance(standin::Instance& instance) const;
    standin::Value global(standin::Host& host) const;

private:
    const standin::RegisteredMethod* chosen = nullptr;
    std::deque<Variable> byrefs;
    standin::Arguments arguments;
    std::optional<standin::Value> assigned;
};

/// The value of a term where `type` is declared. Throws standin::Error when it cannot stand there.
standin::Value valueOf(const Term& term, standin::Type type, const FileReader& read);

/// Sets what "Property = value" or "Method(arguments) = value" names.
void assignTo(standin::Instance& instance, const CallText& text, const FileReader& read);

} // namespace cli
