#include "peer.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace peers
{

namespace
{

Bytes readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    Bytes bytes(file ? static_cast<std::size_t>(file.tellg()) : 0);
    file.seekg(0);
    if (!file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size())))
        throw std::runtime_error("cannot read " + path);
    return bytes;
}

void writeFile(const std::string& path, const Bytes& bytes)
{
    std::ofstream file(path, std::ios::binary);
    if (!file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size())))
        throw std::runtime_error("cannot write " + path);
}

double processSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class Server
{
public:
    Server(const std::string& libraryName, const std::map<std::string, Offer>& known)
        : library(libraryName),
          offers(known)
    {
    }

    nlohmann::json answer(const nlohmann::json& request)
    {
        if (request.contains("prepare"))
            return prepare(request["prepare"]);
        if (request.contains("run"))
            return run(way(request["run"]), request["times"]);
        const Way& saved = way(request.at("save"));
        if (saved.restore)
            saved.restore();
        saved.run();
        writeFile(request["to"], saved.result());
        return nlohmann::json::object();
    }

private:
    nlohmann::json prepare(const nlohmann::json& request)
    {
        ways.clear();
        task = {};
        const auto offer = offers.find(request["work"]);
        if (offer != offers.end())
        {
            task.width = request["width"];
            task.height = request["height"];
            task.settings = request;
            for (const std::string path : request["inputs"])
                task.inputs.push_back(readFile(path));
            ways = offer->second(task);
            for (Way& offered : ways)
                offered.name = library + " " + offered.name;
        }
        nlohmann::json names = nlohmann::json::array();
        for (const Way& offered : ways)
            names.push_back(offered.name);
        return {{"ways", names}};
    }

    static nlohmann::json run(const Way& way, int times)
    {
        const double start = processSeconds();
        for (int time = 0; time < times; ++time)
            way.run();
        return {{"seconds", (processSeconds() - start) / times}};
    }

    const Way& way(const std::string& name) const
    {
        for (const Way& offered : ways)
            if (offered.name == name)
                return offered;
        throw std::runtime_error("no way named " + name);
    }

    const std::string library;
    const std::map<std::string, Offer>& offers;
    Task task;
    std::vector<Way> ways;
};

} // namespace

int serve(const std::string& library, const std::map<std::string, Offer>& offers)
{
    Server server(library, offers);
    std::string line;
    while (std::getline(std::cin, line))
    {
        nlohmann::json answer;
        try
        {
            answer = server.answer(nlohmann::json::parse(line));
        }
        catch (const std::exception& error)
        {
            answer = {{"error", error.what()}};
        }
        std::cout << answer.dump() << std::endl;
    }
    return 0;
}

std::size_t columnStart(const Task& task, int column)
{
    const double count = task.settings["samples"];
    return static_cast<std::size_t>(static_cast<double>(column) / task.width * count);
}

Bytes waveformBars(const Task& task, const std::vector<std::int32_t>& positive,
                   const std::vector<std::int32_t>& negative)
{
    const auto mean = [&](const std::vector<std::int32_t>& sums, int column) {
        const auto samples = columnStart(task, column + 1) - columnStart(task, column);
        return sums[static_cast<std::size_t>(column)] / (static_cast<double>(samples) * 0.5);
    };
    double peak = 0;
    for (int column = 0; column < task.width; ++column)
        peak = std::max({peak, mean(positive, column), -mean(negative, column)});
    const int centre = task.height / 2;
    std::vector<std::int32_t> rows;
    for (int column = 0; column < task.width; ++column)
        for (const auto* sums : {&negative, &positive})
        {
            const double end = mean(*sums, column) * task.height / (2 * peak) + centre;
            rows.push_back(std::clamp(static_cast<int>(end), 0, task.height - 1));
        }
    return bytesOf(rows);
}

} // namespace peers
