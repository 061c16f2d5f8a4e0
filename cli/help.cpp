#include "cli/commands.h"
#include "cli/suggestions.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "help_pages.h"

namespace cli
{

namespace
{

using Lines = std::vector<std::string>;

constexpr std::size_t lineWidth = 79;
constexpr std::size_t margin = 4;

Lines linesOf(std::string_view text)
{
    Lines lines;
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/// 2 for "## Name", 0 for what is no heading.
std::size_t headingLevel(const std::string& line)
{
    const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
    return level != 0 && level < line.size() && line[level] == ' ' ? level : 0;
}

/// A section without its heading: up to the next one of its level or above.
std::optional<Lines> sectionIn(std::string_view page, const std::string& name)
{
    std::optional<Lines> section;
    std::size_t sectionLevel = 0;
    bool fenced = false;
    for (const std::string& line : linesOf(page))
    {
        if (line.starts_with("```"))
            fenced = !fenced;
        const std::size_t level = fenced ? 0 : headingLevel(line);
        if (section && level != 0 && level <= sectionLevel)
            return section;
        if (section)
            section->push_back(line);
        else if (level != 0 && standin::sameName(line.substr(level + 1), name))
        {
            section.emplace();
            sectionLevel = level;
        }
    }
    return section;
}

void replaceAll(std::string& text, std::string_view what, std::string_view with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

/// Without the marks of Markdown; links keep their text.
std::string plain(std::string text)
{
    for (const std::string_view mark : {"**", "`"})
        replaceAll(text, mark, "");
    replaceAll(text, "\\|", "|");
    for (std::size_t middle = text.find("]("); middle != std::string::npos; middle = text.find("]("))
    {
        const std::size_t begin = text.rfind('[', middle);
        const std::size_t end = text.find(')', middle);
        if (begin == std::string::npos || end == std::string::npos)
            break;
        text.erase(middle, end + 1 - middle);
        text.erase(begin, 1);
    }
    return text;
}

/// Words in lines; those after the first are indented further.
void printWrapped(const std::string& text, std::size_t first = 0, std::size_t further = 0)
{
    std::string line(first, ' ');
    bool empty = true;
    for (std::size_t begin = text.find_first_not_of(' '); begin != std::string::npos;)
    {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        if (!empty && line.size() + 1 + word.size() > lineWidth)
        {
            std::cout << line << "\n";
            line.assign(further, ' ');
            empty = true;
        }
        line += (empty ? "" : " ") + word;
        empty = false;
        begin = text.find_first_not_of(' ', end);
    }
    std::cout << line << "\n";
}

Lines cellsOf(const std::string& row)
{
    Lines cells;
    std::string cell;
    for (std::size_t at = 1; at < row.size(); ++at)
    {
        if (row[at] != '|' || row[at - 1] == '\\')
        {
            cell += row[at];
            continue;
        }
        const std::size_t begin = cell.find_first_not_of(' ');
        cells.push_back(begin == std::string::npos
                            ? ""
                            : plain(cell.substr(begin, cell.find_last_not_of(' ') + 1 - begin)));
        cell.clear();
    }
    return cells;
}

/// Each row as a paragraph: its first cell, and what the others say of it.
void printTable(const Lines& rows)
{
    const Lines heads = cellsOf(rows.front());
    for (std::size_t row = 2; row < rows.size(); ++row)
    {
        const Lines cells = cellsOf(rows[row]);
        std::string text = cells.empty() ? "" : cells.front() + ":";
        for (std::size_t index = 1; index < cells.size(); ++index)
            if (!cells[index].empty() && cells[index] != "-")
                text += std::string(text.ends_with(':') ? " " : "; ") +
                        (index < heads.size() && heads[index] == "Default" ? "default " : "") + cells[index];
        printWrapped(text, margin, 2 * margin);
    }
}

void printDeclarations(const standin::Registered& registered, const std::string& name)
{
    const auto print = [](const std::string& text) { printWrapped(text, margin, 2 * margin); };
    const auto printMethods = [&](const std::vector<const standin::RegisteredMethod*>& methods) {
        for (const standin::RegisteredMethod* method : methods)
            print(method->text);
    };
    printMethods(registered.pictureMethods(name));
    printMethods(registered.globalMethods(name));
    const standin::RegisteredClass* definition = registered.findClass(name);
    if (definition == nullptr)
        return;
    for (const standin::RegisteredProperty& property : definition->properties)
        print(property.name + " as " + property.type);
    for (const standin::RegisteredMethod& method : definition->methods)
        print(method.text);
}

void printExample(const std::string& name)
{
    for (const Document& example : examplePrograms)
        if (standin::sameName(example.name, name))
        {
            std::cout << "Example (examples/" << example.name << ".bas):\n\n";
            for (const std::string& line : linesOf(example.text))
                std::cout << std::string(line.empty() ? 0 : margin, ' ') << line << "\n";
        }
}

/// Prints a section's lines, one block after the other.
class SectionPrinter
{
public:
    SectionPrinter(const standin::Registered& registeredThings, const std::string& topic)
        : registered(registeredThings),
          name(topic)
    {
    }

    void print(const Lines& lines)
    {
        for (std::size_t at = 0; at < lines.size();)
        {
            const std::string& line = lines[at];
            const auto blockWhile = [&](auto belongs) {
                Lines block;
                while (at < lines.size() && belongs(lines[at]))
                    block.push_back(lines[at++]);
                return block;
            };
            if (line.empty())
                ++at;
            else if (line.starts_with("```"))
            {
                ++at;
                const Lines block = blockWhile([](const std::string& next) { return next != "```"; });
                ++at;
                printFenced(line.substr(3), block);
            }
            else if (line.starts_with('|'))
            {
                separate();
                printTable(blockWhile([](const std::string& next) { return next.starts_with('|'); }));
            }
            else if (headingLevel(line) != 0)
            {
                separate();
                std::cout << plain(line.substr(headingLevel(line) + 1)) << "\n";
                ++at;
            }
            else
                printParagraph(blockWhile([&](const std::string& next) {
                    return !next.empty() && !next.starts_with("```") && !next.starts_with('|');
                }));
        }
    }

private:
    void separate()
    {
        std::cout << "\n";
    }

    void printFenced(const std::string& kind, const Lines& block)
    {
        if (kind.starts_with("{declarations}"))
        {
            separate();
            printDeclarations(registered, name);
        }
        else if (kind.starts_with("{example}"))
        {
            separate();
            printExample(name);
        }
        else if (!kind.starts_with('{'))
        {
            separate();
            for (const std::string& line : block)
                std::cout << std::string(line.empty() ? 0 : margin, ' ') << line << "\n";
        }
    }

    /// A list's items begin on lines of their own.
    void printParagraph(const Lines& block)
    {
        separate();
        std::string text;
        bool item = false;
        const auto flush = [&] {
            if (!text.empty())
                printWrapped(plain(text), 0, item ? 2 : 0);
        };
        for (const std::string& line : block)
        {
            if (line.starts_with("- "))
            {
                flush();
                text.clear();
                item = true;
            }
            text += (text.empty() ? "" : " ") + line;
        }
        flush();
    }

    const standin::Registered& registered;
    const std::string& name;
};

/// A name as it is registered; nothing where it is none.
std::optional<std::string> registeredName(const standin::Registered& registered, const std::string& name)
{
    for (const auto& methods : {registered.pictureMethods(name), registered.globalMethods(name)})
        if (!methods.empty())
            return methods.front()->declaration.name;
    const standin::RegisteredClass* definition = registered.findClass(name);
    return definition == nullptr ? std::nullopt : std::optional(definition->name);
}

void help(const standin::Host& host, const std::string& name)
{
    const std::optional<std::string> known = registeredName(host.registered(), name);
    if (known)
        for (const Document& page : referencePages)
            if (const std::optional<Lines> section = sectionIn(page.text, *known))
            {
                std::cout << *known << "\n";
                SectionPrinter(host.registered(), *known).print(*section);
                return;
            }
    std::vector<std::string> names = methodNames(host.registered());
    for (std::string& className : classNames(host.registered()))
        names.push_back(std::move(className));
    throw standin::Error(unknownName("method or class", name, names));
}

} // namespace

void addHelp(CLI::App& app, const HostChoice& choice)
{
    const auto name = std::make_shared<std::string>();
    CLI::App& command = *app.add_subcommand("help", "Explain a method or a class");
    command.add_option("NAME", *name, "Its name, such as InvertQVR")->required()->type_name("");
    command.callback([name, &choice] { help(standin::Host(choice.options()), *name); });
}

} // namespace cli
