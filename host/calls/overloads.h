#pragma once

#include "host/calls/registry.h"
#include "host/error.h"
#include "host/values/value.h"

#include <optional>
#include <string_view>
#include <vector>

namespace standin
{

/// What is known of an argument before a call: the declared types where it can stand.
struct ArgumentForm
{
    std::vector<Type> asItIs;
    std::vector<Type> converted = {};
    bool byValue = true;
    bool byReference = false;

    /// 0 as it is, 1 after conversion; nothing: it cannot stand for a value of that type.
    std::optional<int> cost(Type type) const;
};

/// What becomes whatever object is declared: nil is one.
ArgumentForm formOfObject();
ArgumentForm formOf(const Value& value);
/// A variable that nothing was assigned to.
ArgumentForm formOfNewVariable();

/// Arguments that no overload takes.
class ArgumentError : public Error
{
public:
    ArgumentError(const std::string& text, std::size_t which) : Error(text), argument(which)
    {
    }

    /// The first one that does not fit, counted from 0; as many as were given where one is missing.
    const std::size_t argument;
};

/// The overload that needs the fewest conversions, the first of equals. Throws ArgumentError when none fits,
/// naming what would, and which argument does not.
const RegisteredMethod& chooseOverload(const std::vector<const RegisteredMethod*>& overloads,
                                       std::string_view name, const std::vector<ArgumentForm>& arguments);

} // namespace standin
