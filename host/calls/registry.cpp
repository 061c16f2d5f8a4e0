#include "host/calls/registry.h"

#include "host/error.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace standin
{

namespace
{

/// The first layout version whose rows have their full width.
constexpr int firstWideVersion = 10;

/// Words of a row of each table in a layout.
struct RowWidths
{
    std::size_t property;
    std::size_t method;
};

constexpr RowWidths wideRows{12, 6};
constexpr RowWidths narrowRows{10, 4};

std::string textOrNothing(const char* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

/// A process makes many hosts, and each of them gets the same texts.
const Declaration& parsedOnce(const std::string& text)
{
    static std::map<std::string, Declaration> known;
    const auto found = known.find(text);
    return found != known.end() ? found->second : known.emplace(text, parseDeclaration(text)).first->second;
}

RegisteredMethod readMethodRow(const std::uint32_t* words, std::size_t width)
{
    // The record begins the same in both layouts; what a narrow row lacks stays zero.
    REALmethodDefinition row{};
    std::memcpy(&row, words, width * sizeof *words);
    return readMethod(row);
}

RegisteredProperty readPropertyRow(const std::uint32_t* words, std::size_t width)
{
    REALproperty row{};
    std::memcpy(&row, words, width * sizeof *words);
    RegisteredProperty property;
    if (row.group != nullptr)
        property.group = row.group;
    property.name = textOrNothing(row.name);
    property.type = textOrNothing(row.type);
    property.flags = row.flags;
    property.getter = row.getter;
    property.setter = row.setter;
    property.parameter = row.parameter;
    return property;
}

template <class Row, class Read>
auto readRows(const Row* rows, int count, std::size_t width, Read read)
{
    std::vector<decltype(read(nullptr, width))> result;
    const auto* words = reinterpret_cast<const std::uint32_t*>(rows);
    for (int row = 0; words != nullptr && row < count; ++row, words += width)
        result.push_back(read(words, width));
    return result;
}

} // namespace

std::vector<const RegisteredMethod*> methodsNamed(const std::vector<RegisteredMethod>& methods,
                                                  std::string_view name)
{
    std::vector<const RegisteredMethod*> found;
    for (const RegisteredMethod& method : methods)
        if (sameName(method.declaration.name, name))
            found.push_back(&method);
    return found;
}

RegisteredMethod readMethod(const REALmethodDefinition& row)
{
    RegisteredMethod method;
    method.text = textOrNothing(row.declaration);
    method.declaration = parsedOnce(method.text);
    method.handler = row.handler;
    method.setter = row.setter;
    method.flags = row.flags;
    method.attributeCount = static_cast<std::uint32_t>(row.attributeCount);
    return method;
}

RegisteredClass readClass(REALclassDefinition* definition, std::intptr_t hostWord)
{
    RegisteredClass result;
    result.definition = definition;
    std::memcpy(result.words.data(), definition, sizeof result.words);
    result.version = definition->version;
    result.name = textOrNothing(definition->name);
    if (definition->superName != nullptr)
        result.superName = definition->superName;
    result.dataSize = definition->dataSize;
    result.flags = definition->flags;
    result.constructor = definition->constructor;
    result.destructor = definition->destructor;

    const RowWidths widths = definition->version >= firstWideVersion ? wideRows : narrowRows;
    result.properties =
        readRows(definition->properties, definition->propertyCount, widths.property, readPropertyRow);
    result.methods = readRows(definition->methods, definition->methodCount, widths.method, readMethodRow);
    result.sharedProperties = readRows(definition->sharedProperties, definition->sharedPropertyCount,
                                       widths.property, readPropertyRow);
    result.sharedMethods =
        readRows(definition->sharedMethods, definition->sharedMethodCount, widths.method, readMethodRow);

    definition->hostWord = hostWord;
    result.hostWord = hostWord;
    return result;
}

std::vector<const RegisteredMethod*> Registered::pictureMethods(std::string_view name) const
{
    for (const RegisteredClass& extension : extensions)
        if (sameName(extension.name, "Picture"))
            return methodsNamed(extension.methods, name);
    return {};
}

std::vector<const RegisteredMethod*> Registered::globalMethods(std::string_view name) const
{
    return methodsNamed(globals, name);
}

const RegisteredClass* Registered::findClass(std::string_view name) const
{
    const auto found = std::find_if(classes.begin(), classes.end(), [name](const RegisteredClass& item) {
        return sameName(item.name, name);
    });
    return found == classes.end() ? nullptr : &*found;
}

} // namespace standin
