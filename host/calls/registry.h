#pragma once

#include "abi/host_abi.h"
#include "host/calls/declaration.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace standin
{

/// A method row as it reached the host.
struct RegisteredMethod
{
    std::string text; ///< the declaration as it was given
    Declaration declaration;
    REALanyFunction handler = nullptr;
    REALanyFunction setter = nullptr;
    std::uint32_t flags = 0;
    std::uint32_t attributeCount = 0; ///< 0 for rows of the older layout, which have none
};

/// A property row as it reached the host.
struct RegisteredProperty
{
    std::optional<std::string> group;
    std::string name;
    std::string type;
    std::uint32_t flags = 0;
    REALanyFunction getter = nullptr;
    REALanyFunction setter = nullptr;
    std::intptr_t parameter = 0;

    /// Whether the host reads and writes the field by itself (all bits of the getter set).
    bool isField() const
    {
        return reinterpret_cast<std::intptr_t>(getter) == -1;
    }
};

/// A class or class extension as it reached the host.
struct RegisteredClass
{
    REALclassDefinition* definition = nullptr; ///< the very record; the host word was written into it
    std::array<std::uint32_t, 25>
        words{}; ///< the record's words on arrival, before the host word was written
    int version = 0;
    std::string name;
    std::optional<std::string> superName;
    int dataSize = 0;
    std::intptr_t hostWord = 0;
    std::uint32_t flags = 0;
    std::vector<RegisteredProperty> properties;
    std::vector<RegisteredMethod> methods;
    std::vector<RegisteredProperty> sharedProperties;
    std::vector<RegisteredMethod> sharedMethods;
    REALanyFunction constructor = nullptr;
    REALanyFunction destructor = nullptr;
};

/// The methods of a name, in their order.
std::vector<const RegisteredMethod*> methodsNamed(const std::vector<RegisteredMethod>& methods,
                                                  std::string_view name);

/// Everything that the plug-in has registered.
struct Registered
{
    std::vector<int> announcedVersions; ///< the arguments of "RegisterPluginVersion", in order
    std::vector<RegisteredClass> classes;
    std::vector<RegisteredClass> extensions;
    std::vector<RegisteredMethod> globals;

    /// The methods of a name: of the extensions of "Picture".
    std::vector<const RegisteredMethod*> pictureMethods(std::string_view name) const;
    std::vector<const RegisteredMethod*> globalMethods(std::string_view name) const;
    /// The class of a name, or null.
    const RegisteredClass* findClass(std::string_view name) const;
};

/// Reads a definition in the layout that its first word names, and writes `hostWord` into the record.
RegisteredClass readClass(REALclassDefinition* definition, std::intptr_t hostWord);
/// Reads one method row of the layout with attribute words.
RegisteredMethod readMethod(const REALmethodDefinition& row);

} // namespace standin
