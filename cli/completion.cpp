// Shells ask the program itself what could come next, so that what they offer is what it understands.
#include "cli/command_tree.h"
#include "cli/commands.h"
#include "cli/suggestions.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "completion_scripts.h"

namespace cli
{

namespace
{

/// A word that could come next, and what it means.
struct Candidate
{
    std::string word;
    std::string meaning;
};

/// What could come next.
struct Suggestions
{
    std::vector<Candidate> candidates;
    bool files = false;
    bool folders = false;
};

bool startsWith(const std::string& word, const std::string& start)
{
    return word.size() >= start.size() && standin::sameName(word.substr(0, start.size()), start);
}

/// "--artefact", "=", "mac", as bash cuts "--artefact=mac", in one piece again.
std::vector<std::string> joined(const std::vector<std::string>& words)
{
    std::vector<std::string> result;
    bool open = false;
    for (const std::string& word : words)
    {
        if ((word == "=" || open) && !result.empty())
            result.back() += word;
        else
            result.push_back(word);
        open = word == "=";
    }
    return result;
}

/// Walks through the words of a line, up to the one that is being written.
class Line
{
public:
    Line(const CLI::App& app, const HostChoice& hostChoice, std::vector<std::string> lineWords)
        : words(std::move(lineWords)),
          current(words.empty() ? "" : words.back()),
          command(&app),
          choice(hostChoice)
    {
        for (std::size_t at = 0; at + 1 < words.size(); ++at)
            read(words[at]);
    }

    Suggestions suggestions()
    {
        if (waiting != nullptr)
            suggestValues(*waiting, "", current);
        else if (const std::size_t equals = current.find('=');
                 current.starts_with("--") && equals != std::string::npos)
        {
            if (const CLI::Option* option = optionNamed(current.substr(0, equals)))
                suggestValues(*option, current.substr(0, equals + 1), current.substr(equals + 1));
        }
        else if (current.starts_with('-'))
            suggestOptions();
        else if (!commandsOf(*command).empty())
        {
            for (const CLI::App* subcommand : commandsOf(*command))
                suggest(subcommand->get_name(), subcommand->get_description());
        }
        else if (const CLI::Option* positional = currentPositional())
            suggestValues(*positional, "", current);
        return std::move(result);
    }

private:
    void read(const std::string& word)
    {
        if (waiting != nullptr)
            waiting = nullptr;
        else if (word.starts_with('-') && word.size() > 1)
        {
            const CLI::Option* option = optionNamed(word);
            waiting = option != nullptr && takesValue(*option) ? option : nullptr;
        }
        else if (const auto found = subcommandNamed(word); found != nullptr)
            command = found;
        else
            positionals.push_back(word);
    }

    const CLI::App* subcommandNamed(const std::string& name) const
    {
        for (const CLI::App* subcommand : commandsOf(*command))
            if (subcommand->get_name() == name)
                return subcommand;
        return nullptr;
    }

    /// Of the command, or of the program around it.
    std::vector<const CLI::Option*> options() const
    {
        std::vector<const CLI::Option*> all = namedOptionsOf(*command);
        if (command->get_parent() != nullptr)
            for (const CLI::Option* option : namedOptionsOf(*command->get_parent()))
                if (option->get_group() == "Host")
                    all.push_back(option);
        return all;
    }

    const CLI::Option* optionNamed(const std::string& name) const
    {
        for (const CLI::Option* option : options())
            if (option->check_name(name))
                return option;
        return nullptr;
    }

    const CLI::Option* currentPositional() const
    {
        std::size_t place = 0;
        for (const CLI::Option* option : positionalsOf(*command))
        {
            place += static_cast<std::size_t>(option->get_items_expected_max());
            if (positionals.size() < place)
                return option;
        }
        return nullptr;
    }

    void suggest(const std::string& word, const std::string& meaning)
    {
        // Forms of a method come one after the other.
        const bool isRepeated = !result.candidates.empty() && result.candidates.back().word == word;
        if (!isRepeated && startsWith(word, current))
            result.candidates.push_back({word, meaning});
    }

    void suggestOptions()
    {
        for (const CLI::Option* option : options())
            for (const std::string& name : option->get_lnames())
                suggest("--" + name, option->get_description());
    }

    /// The option's type says what it takes, or the name of what stands without a dash.
    void suggestValues(const CLI::Option& option, const std::string& before, const std::string& begun)
    {
        const std::string kind = option.get_positional() ? option.get_name(true) : typeOf(option);
        const std::vector<std::string> values = valuesOf(option);
        for (const std::string& value : values)
            suggest(before + value, "");
        if (!values.empty())
            return;
        if (kind == "CALL" || kind == "NAME" || kind == "CLASS")
            suggestNames(kind);
        else if (kind == "NAME=VALUE")
            suggestProperties();
        else if (kind == "DIR")
            result.folders = true;
        else if (kind.find('=') != std::string::npos)
            result.files = begun.find('=') != std::string::npos;
        else
            result.files = kind != "NUMBER" && kind != "ARGUMENTS";
    }

    /// The line is none of this program's own, so that nobody has looked at the environment.
    standin::Options chosenOptions() const
    {
        HostChoice own = choice;
        if (const char* plugin = std::getenv(pluginVariable))
            own.plugin = plugin;
        return own.options();
    }

    void suggestNames(const std::string& kind)
    {
        const standin::Host host(chosenOptions());
        if (kind != "CLASS")
            for (const std::string& name : methodNames(host.registered()))
                suggest(name, "");
        if (kind != "CALL")
            for (const std::string& name : classNames(host.registered()))
                suggest(name, "");
    }

    /// Of the class that the line has named.
    void suggestProperties()
    {
        const standin::Host host(chosenOptions());
        const standin::RegisteredClass* definition =
            positionals.empty() ? nullptr : host.registered().findClass(positionals.front());
        if (definition == nullptr)
            return;
        for (const standin::RegisteredProperty& property : definition->properties)
            suggest(property.name + "=", property.type);
    }

    std::vector<std::string> words;
    std::string current;
    const CLI::App* command;
    const HostChoice& choice;
    const CLI::Option* waiting = nullptr; ///< for its value
    std::vector<std::string> positionals;
    Suggestions result;
};

constexpr const char* completionFooter = R"(
To have it in every new shell:
  pictureqvr completion bash >~/.local/share/bash-completion/completions/pictureqvr
  pictureqvr completion zsh >~/.zfunc/_pictureqvr   # any folder of $fpath
  pictureqvr completion fish >~/.config/fish/completions/pictureqvr.fish
)";

} // namespace

void addCompletion(CLI::App& app)
{
    const auto shell = std::make_shared<std::string>();
    CLI::App& command = *app.add_subcommand("completion", "Print what makes a shell complete commands");
    command.footer(completionFooter);
    command.add_option("SHELL", *shell, "The shell")
        ->required()
        ->type_name("bash|zsh|fish")
        ->check(CLI::IsMember({"bash", "zsh", "fish"}).description(""));
    command.callback([shell] {
        for (const CompletionScript& script : completionScripts)
            if (script.shell == *shell)
                std::cout << script.text;
    });
}

void complete(const CLI::App& app, const HostChoice& choice, const std::vector<std::string>& words)
{
    const Suggestions suggestions = Line(app, choice, joined(words)).suggestions();
    if (suggestions.files)
        std::cout << ":files\n";
    if (suggestions.folders)
        std::cout << ":folders\n";
    for (const Candidate& candidate : suggestions.candidates)
        std::cout << candidate.word << (candidate.meaning.empty() ? "" : "\t") << candidate.meaning << "\n";
}

} // namespace cli
