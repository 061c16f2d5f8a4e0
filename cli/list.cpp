#include "cli/commands.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iomanip>
#include <iostream>

namespace cli
{

namespace
{

using nlohmann::ordered_json;

std::string resultText(const standin::RegisteredMethod& method)
{
    const standin::Declaration& declaration = method.declaration;
    std::string text = declaration.parameters.empty() ? "" : declaration.parameterText() + " ";
    if (declaration.result != standin::Type::Nothing)
        text += "as " + std::string(nameOf(declaration.result));
    return text + (method.setter != nullptr ? ", assignable" : "");
}

/// Names in one column, what follows them in the next.
using Rows = std::vector<std::pair<std::string, std::string>>;

Rows rowsOf(const std::vector<standin::RegisteredMethod>& methods)
{
    Rows rows;
    for (const auto& method : methods)
        rows.emplace_back(method.declaration.name, resultText(method));
    return rows;
}

Rows rowsOf(const std::vector<standin::RegisteredProperty>& properties)
{
    Rows rows;
    for (const auto& property : properties)
        rows.emplace_back(property.name, "as " + property.type);
    return rows;
}

std::string counted(std::size_t count, const char* one, const char* many)
{
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

void print(const std::string& heading, const Rows& rows)
{
    std::size_t width = 0;
    for (const auto& row : rows)
        width = std::max(width, row.first.size());
    std::cout << heading << "\n";
    for (const auto& [name, rest] : rows)
    {
        std::cout << "    ";
        if (!rest.empty())
            std::cout << std::left << std::setw(static_cast<int>(width) + 1);
        std::cout << name << rest << "\n";
    }
    std::cout << "\n";
}

void printText(const standin::Registered& registered)
{
    for (const auto& definition : registered.classes)
    {
        Rows rows = rowsOf(definition.properties);
        const Rows methods = rowsOf(definition.methods);
        rows.insert(rows.end(), methods.begin(), methods.end());
        print("Class " + definition.name + ": " +
                  counted(definition.properties.size(), "property", "properties") + ", " +
                  counted(methods.size(), "method", "methods"),
              rows);
    }
    for (const auto& extension : registered.extensions)
        print("Extension of class " + extension.name + ": " +
                  counted(extension.methods.size(), "method", "methods"),
              rowsOf(extension.methods));
    print("Global: " + counted(registered.globals.size(), "method", "methods"), rowsOf(registered.globals));
}

ordered_json jsonOf(const standin::RegisteredMethod& method)
{
    const auto defaultOf = [](const standin::Literal& value) {
        return std::visit([](auto content) { return ordered_json(content); }, value);
    };
    ordered_json parameters = ordered_json::array();
    for (const auto& parameter : method.declaration.parameters)
    {
        ordered_json& entry = parameters.emplace_back(ordered_json{
            {"name", parameter.name}, {"type", nameOf(parameter.type)}, {"byref", parameter.byref}});
        if (parameter.defaultValue)
            entry["default"] = defaultOf(*parameter.defaultValue);
    }
    ordered_json result = nullptr;
    if (method.declaration.result != standin::Type::Nothing)
        result = nameOf(method.declaration.result);
    return {{"name", method.declaration.name},
            {"declaration", method.text},
            {"parameters", parameters},
            {"result", result},
            {"assignable", method.setter != nullptr}};
}

ordered_json jsonOf(const standin::RegisteredProperty& property)
{
    return {{"name", property.name}, {"type", property.type}};
}

ordered_json jsonOf(const standin::RegisteredClass& definition);

template <class Entry>
ordered_json jsonOf(const std::vector<Entry>& entries)
{
    ordered_json result = ordered_json::array();
    for (const Entry& entry : entries)
        result.push_back(jsonOf(entry));
    return result;
}

ordered_json jsonOf(const standin::RegisteredClass& definition)
{
    return {{"name", definition.name},
            {"properties", jsonOf(definition.properties)},
            {"methods", jsonOf(definition.methods)}};
}

void list(const standin::Host& host, bool json)
{
    const standin::Registered& registered = host.registered();
    if (!json)
        return printText(registered);
    constexpr int indent = 2;
    std::cout << ordered_json{{"classes", jsonOf(registered.classes)},
                              {"extensions", jsonOf(registered.extensions)},
                              {"globals", jsonOf(registered.globals)}}
                     .dump(indent)
              << "\n";
}

} // namespace

void addList(CLI::App& app, const HostChoice& choice)
{
    const auto json = std::make_shared<bool>(false);
    CLI::App& command = *app.add_subcommand("list", "List everything that the plug-in registers");
    command.add_flag("--json", *json, "As JSON");
    command.callback([json, &choice] { list(standin::Host(choice.options()), *json); });
}

} // namespace cli
