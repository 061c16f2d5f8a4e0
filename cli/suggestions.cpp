#include "cli/suggestions.h"

#include "host/names.h"

namespace cli
{

std::string unknownName(const std::string& kind, const std::string& name,
                        const std::vector<std::string>& known)
{
    const std::string suggestion = standin::suggestionFor(name, known);
    return "there is no " + kind + " " + name +
           (suggestion.empty() ? "; \"pictureqvr list\" shows all" : suggestion);
}

std::vector<std::string> methodNames(const standin::Registered& registered)
{
    std::vector<std::string> names;
    for (const standin::RegisteredClass& extension : registered.extensions)
        for (const standin::RegisteredMethod& method : extension.methods)
            names.push_back(method.declaration.name);
    for (const standin::RegisteredMethod& method : registered.globals)
        names.push_back(method.declaration.name);
    return names;
}

std::vector<std::string> classNames(const standin::Registered& registered)
{
    std::vector<std::string> names;
    for (const standin::RegisteredClass& definition : registered.classes)
        names.push_back(definition.name);
    return names;
}

} // namespace cli
