/// \file
/// What the language has by itself: functions, and the members of its own types. Wrong names, types and
/// counts throw standin::Error.
#pragma once

#include "host/host.h"
#include "script/environment.h"
#include "script/value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace script
{

using Values = std::vector<Value>;

struct Services
{
    standin::Host& host;
    const Environment& environment;
};

bool isFunction(std::string_view name);
std::vector<std::string> functionNames();
Value callFunction(const Services& services, std::string_view name, const Values& arguments);

/// What pictures have without the plug-in.
bool isOwnPictureMember(std::string_view name);
/// What an object's members are called without the plug-in.
std::vector<std::string> ownMemberNames(const Value& object);

/// "Picture.Open" and the like.
Value classMember(const Services& services, std::string_view className, std::string_view member,
                  const Values& arguments);
bool hasClassMembers(std::string_view className);

/// New Picture and New MemoryBlock.
Value newObject(const Services& services, const VariableType& type, const Values& arguments);

/// Nothing where the object's type has no such member of its own.
std::optional<Value> member(const Services& services, const Value& object, std::string_view name,
                            const Values& arguments);
/// False likewise.
bool assignMember(const Services& services, const Value& object, std::string_view name,
                  const Values& arguments, const Value& value);

/// Throws Error where an object of so many bytes is too large for a program.
void checkSize(const Services& services, std::uint64_t bytes);

} // namespace script
