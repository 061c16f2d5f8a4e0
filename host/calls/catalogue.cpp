#include "host/calls/catalogue.h"

#include <algorithm>
#include <set>

namespace standin
{

namespace
{

using Lines = std::vector<std::string>;

constexpr std::uint32_t consoleFlag = 4;
constexpr const char* consoleText = ", on consoles";

/// Older hosts know no flags of methods and properties.
constexpr double firstVersionWithFlags = 2010.029;

int layoutOf(double version)
{
    struct Layout
    {
        double firstVersion;
        int number;
    };
    constexpr Layout layouts[] = {{2013.03, 12}, {2013.0, 11}, {2012.0, 10}};
    for (const Layout& layout : layouts)
        if (version >= layout.firstVersion)
            return layout.number;
    return 9;
}

std::string flagsText(std::uint32_t flags)
{
    return flags == 0 ? "" : flags == consoleFlag ? consoleText : ", flags " + std::to_string(flags);
}

std::string lineOf(const RegisteredMethod& method)
{
    return "    method " + method.text + (method.setter != nullptr ? ", assignable" : "") +
           flagsText(method.flags);
}

std::string lineOf(const RegisteredProperty& property)
{
    const std::string place = property.isField() ? " at " + std::to_string(property.parameter) : "";
    return "    " + std::string(property.isField() ? "field " : "property ") + property.name + " as " +
           property.type + place + flagsText(property.flags);
}

void addRows(Lines& lines, const RegisteredClass& definition)
{
    for (const RegisteredProperty& property : definition.properties)
        lines.push_back(lineOf(property));
    for (const RegisteredMethod& method : definition.methods)
        lines.push_back(lineOf(method));
}

/// "PictureSepiaQVR: method Close": every row with what it belongs to.
Lines withOwners(const Lines& lines)
{
    Lines result;
    std::string owner;
    for (const std::string& line : lines)
        if (line.starts_with(' '))
            result.push_back(owner + ": " + line.substr(line.find_first_not_of(' ')));
        else
        {
            owner = line.substr(0, line.find(','));
            result.push_back(line);
        }
    return result;
}

/// What a row says before its first remark, which two rows of the same thing share. Declarations have commas
/// in their parentheses only.
std::string subjectOf(const std::string& line)
{
    const std::size_t parameters = line.find(')');
    return line.substr(0, line.find(", ", parameters == std::string::npos ? 0 : parameters));
}

class Comparison
{
public:
    Comparison(Lines wantedLines, Lines gotLines) : wanted(std::move(wantedLines)), got(std::move(gotLines))
    {
    }

    Lines differences() const
    {
        Lines result;
        for (const std::string& line : without(wanted, got))
        {
            const std::string other = ofSubject(without(got, wanted), subjectOf(line));
            result.push_back(other.empty() ? "missing: " + line
                                           : "wrong: " + other + " (wanted: " + line + ")");
        }
        for (const std::string& line : without(got, wanted))
            if (ofSubject(without(wanted, got), subjectOf(line)).empty())
                result.push_back("superfluous: " + line);
        for (std::size_t at = 0; result.empty() && at < wanted.size(); ++at)
            if (got[at] != wanted[at])
                result.push_back("out of order: " + got[at] + " (wanted: " + wanted[at] + ")");
        return result;
    }

private:
    /// With repetitions: a row registered twice is one too many.
    static Lines without(Lines lines, Lines others)
    {
        std::sort(lines.begin(), lines.end());
        std::sort(others.begin(), others.end());
        Lines result;
        std::set_difference(lines.begin(), lines.end(), others.begin(), others.end(),
                            std::back_inserter(result));
        return result;
    }

    static std::string ofSubject(const Lines& lines, const std::string& subject)
    {
        const auto found = std::find_if(lines.begin(), lines.end(),
                                        [&](const std::string& line) { return subjectOf(line) == subject; });
        return found == lines.end() ? "" : *found;
    }

    Lines wanted;
    Lines got;
};

/// The catalogue for a host whose version has no flags.
Lines withoutFlags(Lines lines)
{
    for (std::string& line : lines)
        if (line.starts_with(' ') && line.ends_with(consoleText))
            line.erase(line.size() - std::string_view(consoleText).size());
    return lines;
}

/// Looks at the records themselves.
class RecordCheck
{
public:
    explicit RecordCheck(int layoutNumber) : layout(layoutNumber)
    {
    }

    void lookAt(const RegisteredClass& definition, bool isExtension)
    {
        const std::string& name = definition.name;
        expect(definition.version == layout, name, "is of layout " + std::to_string(definition.version));
        expect(!definition.superName.has_value(), name, "has a super class");
        expect(definition.sharedMethods.empty() && definition.sharedProperties.empty(), name,
               "has shared members");
        // Events, event instances, interfaces, bindings and constants.
        for (const std::size_t word : {11, 12, 13, 14, 15, 16, 17, 18, 19, 21, 22, 23, 24})
            expect(definition.words[word] == 0, name, "has something in word " + std::to_string(word));
        expect(definition.definition->hostWord == definition.hostWord, name,
               "has lost the word that the host wrote");
        expect((definition.constructor == nullptr) == isExtension, name,
               isExtension ? "has a constructor" : "has no constructor");
        expect((definition.destructor == nullptr) == isExtension, name,
               isExtension ? "has a destructor" : "has no destructor");
        for (const RegisteredProperty& property : definition.properties)
        {
            const bool written = reinterpret_cast<std::intptr_t>(property.setter) == -1;
            expect(!property.group.has_value(), name + "." + property.name, "is in a group");
            expect(property.isField() == written, name + "." + property.name,
                   "is half a field and half an accessor");
            expect(property.getter != nullptr && property.setter != nullptr, name + "." + property.name,
                   "lacks an accessor");
        }
        lookAt(definition.methods);
    }

    void lookAt(const std::vector<RegisteredMethod>& methods)
    {
        std::set<REALanyFunction> handlers;
        for (const RegisteredMethod& method : methods)
        {
            expect(method.handler != nullptr, method.text, "has no handler");
            expect(handlers.insert(method.handler).second, method.text, "has another method's handler");
            expect(method.attributeCount == 0, method.text, "has attributes");
        }
    }

    void expect(bool holds, const std::string& what, const std::string& fault)
    {
        if (!holds)
            faults.push_back(what + " " + fault);
    }

    Lines faults;

private:
    int layout;
};

} // namespace

std::vector<std::string> catalogueLines(const Registered& registered)
{
    Lines lines;
    for (const RegisteredClass& definition : registered.classes)
    {
        lines.push_back("class " + definition.name + ", " + std::to_string(definition.dataSize) + " bytes" +
                        flagsText(definition.flags));
        addRows(lines, definition);
    }
    for (const RegisteredClass& extension : registered.extensions)
    {
        lines.push_back("extension " + extension.name + flagsText(extension.flags));
        addRows(lines, extension);
    }
    lines.emplace_back("global");
    for (const RegisteredMethod& method : registered.globals)
        lines.push_back(lineOf(method));
    return lines;
}

std::vector<std::string> registrationFaults(const Registered& registered, double version,
                                            const std::vector<std::string>& catalogue)
{
    const int layout = layoutOf(version);
    RecordCheck check(layout);
    const std::vector<int>& announced = registered.announcedVersions;
    check.expect(announced == std::vector{layout}, "the plug-in",
                 announced.empty() ? "announces no layout"
                                   : "announces layout " + std::to_string(announced.front()) + ", where " +
                                         std::to_string(layout) + " is the newest");
    for (const RegisteredClass& definition : registered.classes)
        check.lookAt(definition, false);
    for (const RegisteredClass& extension : registered.extensions)
        check.lookAt(extension, true);
    check.lookAt(registered.globals);

    const Lines wanted = withOwners(version >= firstVersionWithFlags ? catalogue : withoutFlags(catalogue));
    Lines faults = Comparison(wanted, withOwners(catalogueLines(registered))).differences();
    faults.insert(faults.end(), check.faults.begin(), check.faults.end());
    return faults;
}

} // namespace standin
