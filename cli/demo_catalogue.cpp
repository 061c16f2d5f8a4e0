#include "cli/demo_catalogue.h"

#include "host/error.h"
#include "host/file.h"

#include <algorithm>
#include <span>
#include <sstream>
#include <string_view>

#include "help_pages.h"

namespace cli
{

using standin::Error;

namespace
{

/// A file of the project in `source`, or what the program itself has of it.
std::string textOf(const std::filesystem::path& source, const std::filesystem::path& file,
                   std::span<const Document> documents)
{
    if (!source.empty())
        return standin::readText(source / file);
    const std::string name = file.stem();
    const auto found = std::find_if(documents.begin(), documents.end(),
                                    [&](const Document& document) { return document.name == name; });
    if (found == documents.end())
        throw Error("there is no " + file.string());
    return std::string(found->text);
}

/// What stands between the next two marks; `text` goes on behind them. Empty where there is nothing more.
std::string_view takeBetween(std::string_view& text, std::string_view opening, std::string_view closing)
{
    const std::size_t start = text.find(opening);
    const std::size_t end =
        start == std::string_view::npos ? start : text.find(closing, start + opening.size());
    if (end == std::string_view::npos)
        return text = {};
    const std::string_view found = text.substr(start + opening.size(), end - start - opening.size());
    text.remove_prefix(end + closing.size());
    return found;
}

std::string trimmed(const std::string& text, const char* unwanted)
{
    const std::size_t start = text.find_first_not_of(unwanted);
    return start == std::string::npos ? "" : text.substr(start, text.find_last_not_of(unwanted) - start + 1);
}

} // namespace

std::vector<Family> readFamilies(const std::filesystem::path& source)
{
    const std::filesystem::path tableOfContents = "docs/reference/index.md";
    std::vector<Family> families;
    std::istringstream lines{textOf(source, tableOfContents, referencePages)};
    for (std::string line; std::getline(lines, line);)
    {
        if (!line.starts_with("| ["))
            continue;
        std::string_view rest = line;
        Family family{std::string(takeBetween(rest, "[", "]")), {}};
        for (std::string_view name = takeBetween(rest, "`", "`"); !name.empty();
             name = takeBetween(rest, "`", "`"))
            family.names.emplace_back(name);
        families.push_back(std::move(family));
    }
    if (families.empty())
        throw Error((source / tableOfContents).string() + " names no families of methods");
    return families;
}

Example readExample(const std::filesystem::path& source, const std::string& name)
{
    const std::filesystem::path file = "examples/" + name + ".bas";
    const std::string_view shows = "' Shows:";
    const std::string_view prints = "' Prints:";
    Example example{(source / file).string(), textOf(source, file, examplePrograms), {}, {}};
    std::istringstream lines{example.text};
    std::string line;
    std::getline(lines, line);
    if (!line.starts_with(shows))
        throw Error(example.file + " does not begin with \"" + std::string(shows) + "\"");
    example.shows = trimmed(line.substr(shows.size()), " \r");
    while (std::getline(lines, line))
        if (!line.starts_with(prints))
            example.code += line + "\n";
    example.code = trimmed(example.code, "\r\n");
    return example;
}

} // namespace cli
