/// \file
/// Turns a function of the stand-in into one that the plug-in can call: finds the current host, logs the
/// call, lets it fail when that is planned, and keeps C++ exceptions from the plug-in's frames.
#pragma once

#include "abi/system_abi.h"
#include "host/core/core.h"

#include <algorithm>
#include <exception>
#include <string>
#include <type_traits>

namespace standin
{

/// A function's name as template argument.
template <std::size_t size>
struct ServiceName
{
    constexpr ServiceName(const char (&name)[size])
    {
        std::copy_n(name, size, text);
    }

    char text[size]{};
};

/// The text of a constant string; nothing when it is none.
std::optional<std::string> constantText(CFStringRef string);

template <class Argument>
std::string describeArgument(const Core& core, Argument argument)
{
    if constexpr (std::is_same_v<Argument, const char*>)
        return argument == nullptr ? "nil" : "\"" + std::string(argument) + "\"";
    else if constexpr (std::is_same_v<Argument, CFStringRef>)
        return "\"" + constantText(argument).value_or("") + "\"";
    else if constexpr (std::is_same_v<Argument, bool>)
        return argument ? "true" : "false";
    else if constexpr (std::is_pointer_v<Argument>)
        return core.nameOf(argument);
    else
        return std::to_string(argument);
}

template <ServiceName name, class... Arguments>
std::string describeCall(const Core& core, Arguments... arguments)
{
    std::string text = name.text;
    const char* separator = "(";
    ((text += separator + describeArgument(core, arguments), separator = ", "), ...);
    return text + (sizeof...(arguments) == 0 ? "()" : ")");
}

/// Does a call: `function` gets the current host and the arguments. A planned failure gives `failure`, which
/// is a number or a function in the place of `function`.
template <ServiceName name, auto function, auto failure = 0, class... Arguments>
auto serve(Arguments... arguments)
{
    using Result = std::invoke_result_t<decltype(function), Core&, Arguments...>;
    constexpr bool canFail = !std::is_void_v<Result> && !std::is_floating_point_v<Result>;

    const CallTimer::Turn turn(CallTimer::Side::Host);
    Core& core = Core::current();
    const auto failed = [&] {
        if constexpr (std::is_invocable_v<decltype(failure), Core&, Arguments...>)
            return failure(core, arguments...);
        else if constexpr (std::is_pointer_v<Result>)
            return Result(nullptr);
        else if constexpr (!std::is_void_v<Result>)
            return static_cast<Result>(failure);
    };

    try
    {
        if (core.options.logCalls)
            core.log(describeCall<name>(core, arguments...));
        if (core.faults.strikes(name.text, canFail))
        {
            core.faults.describeFailure(describeCall<name>(core, arguments...));
            return failed();
        }
        return function(core, arguments...);
    }
    catch (...)
    {
        core.pendingError = std::current_exception();
        return failed();
    }
}

/// A row of a table of functions that are found by name.
struct ServiceEntry
{
    const char* name;
    void* address;
};

template <ServiceName name, auto function, auto failure, class Result, class... Arguments>
void* serviceAddress(Result (*)(Core&, Arguments...))
{
    Result (*address)(Arguments...) = [](Arguments... arguments) -> Result {
        return serve<name, function, failure, Arguments...>(arguments...);
    };
    return reinterpret_cast<void*>(address);
}

/// The row of `function` in such a table.
template <ServiceName name, auto function, auto failure = 0>
ServiceEntry entry()
{
    return {name.text, serviceAddress<name, function, failure>(function)};
}

/// Address of a name in a table, or null.
template <class Table>
void* findEntry(const Table& table, std::string_view name)
{
    const auto found = std::find_if(std::begin(table), std::end(table),
                                    [name](const ServiceEntry& row) { return name == row.name; });
    return found == std::end(table) ? nullptr : found->address;
}

/// The host functions: host/services/host_functions.cpp.
void* findHostFunction(std::string_view name);
/// The methods that hosts offer by declaration, to be called with the object that has them (null: global
/// ones).
void* findObjectMethod(Core& core, Object* object, const char* declaration);
/// The functions of the QuickDraw framework: host/system/quickdraw.cpp.
void* findQuickDrawFunction(std::string_view name);
/// QuickDraw's port and device before anybody changes them.
void* defaultPort();
void* defaultDevice();
/// The host's conversion of text; nothing for an encoding that it does not know.
std::optional<std::string> convertText(const std::string& text, std::uint32_t from, std::uint32_t to);

} // namespace standin
