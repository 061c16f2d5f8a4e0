#pragma once

#include "host/calls/registry.h"
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

/// The overload that needs the fewest conversions, the first of equals. Throws Error when none fits, naming
/// what would.
const RegisteredMethod& chooseOverload(const std::vector<const RegisteredMethod*>& overloads,
                                       std::string_view name, const std::vector<ArgumentForm>& arguments);

} // namespace standin
