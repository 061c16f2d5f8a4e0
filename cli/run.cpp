#include "cli/run.h"

#include "host/file.h"
#include "script/interpreter.h"
#include "script/parser.h"

#include <iostream>
#include <map>

namespace cli
{

namespace
{

std::map<std::string, std::string> placesOf(const std::vector<std::string>& files)
{
    std::map<std::string, std::string> places;
    for (const std::string& entry : files)
    {
        const std::size_t end = entry.find('=');
        if (end == std::string::npos)
            throw standin::Error("--file takes NAME=PATH, not \"" + entry + "\"");
        places[entry.substr(0, end)] = entry.substr(end + 1);
    }
    return places;
}

} // namespace

void run(const HostChoice& choice, const RunRequest& request)
{
    const std::vector<std::uint8_t> file = standin::readFile(request.program);
    const std::map<std::string, std::string> places = placesOf(request.files);
    const script::Program program =
        script::parseProgram({reinterpret_cast<const char*>(file.data()), file.size()}, request.program);

    script::Environment environment;
    environment.path = [&places](const std::string& name) {
        const auto place = places.find(name);
        return place == places.end() ? name : place->second;
    };
    environment.print = [](const std::string& line) { std::cout << line << "\n"; };
    environment.arguments = request.arguments;
    environment.arguments.insert(environment.arguments.begin(), request.program);
    environment.storage = choice.storage;
    environment.steps = request.steps;

    standin::Host host(choice.options());
    script::run(program, host, environment);
    checkLedger(host);
}

} // namespace cli
