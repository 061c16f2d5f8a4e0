#include "bench/peer_programs.h"

#include "host/error.h"
#include "host/file.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

namespace
{

/// How far a level may be off in a result that is called inexact and not wrong.
constexpr int largestInexactness = 3;

/// How a result differs: nothing, or how much. Throws standin::Error where it is another result altogether.
std::string differenceBetween(const Bytes& wanted, const Bytes& got, bool colorsOnly)
{
    if (wanted.size() != got.size())
        throw standin::Error("its result has " + std::to_string(got.size()) + " bytes, not " +
                             std::to_string(wanted.size()));
    std::size_t compared = 0;
    std::size_t different = 0;
    int largest = 0;
    for (std::size_t at = 0; at < wanted.size(); ++at)
    {
        if (colorsOnly && at % 4 == 0)
            continue;
        const int distance = std::abs(wanted[at] - got[at]);
        ++compared;
        different += distance != 0 ? 1 : 0;
        largest = std::max(largest, distance);
    }
    if (different == 0)
        return {};
    char share[16];
    std::snprintf(share, sizeof share, "%.2g %%",
                  100.0 * static_cast<double>(different) / static_cast<double>(compared));
    const std::string text = "off by " + std::to_string(largest) + " in " + share;
    if (!colorsOnly || largest > largestInexactness)
        throw standin::Error("its result is another one, " + text);
    return text;
}

} // namespace

PeerProgram::PeerProgram(const std::filesystem::path& file) : name(file.filename())
{
    int toPeer[2];
    int fromPeer[2];
    if (pipe2(toPeer, O_CLOEXEC) != 0 || pipe2(fromPeer, O_CLOEXEC) != 0)
        throw standin::Error("no pipe to " + name);
    requests.reset(fdopen(toPeer[1], "w"));
    answers.reset(fdopen(fromPeer[0], "r"));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toPeer[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fromPeer[1], STDOUT_FILENO);
    std::string path = file.string();
    char* const arguments[] = {path.data(), nullptr};
    const int failed = posix_spawn(&process, path.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(toPeer[0]);
    close(fromPeer[1]);
    if (failed != 0)
        throw standin::Error("cannot start " + path);
}

PeerProgram::~PeerProgram()
{
    requests.reset();
    waitpid(process, nullptr, 0);
}

nlohmann::json PeerProgram::ask(const nlohmann::json& request)
{
    const std::string text = request.dump() + "\n";
    std::fputs(text.c_str(), requests.get());
    std::fflush(requests.get());
    char* line = nullptr;
    std::size_t capacity = 0;
    const bool answered = getline(&line, &capacity, answers.get()) > 0;
    const std::unique_ptr<char, void (*)(void*)> owned(line, std::free);
    if (!answered)
        throw standin::Error(name + " has ended");
    const nlohmann::json answer = nlohmann::json::parse(line);
    if (answer.contains("error"))
        throw standin::Error(name + ": " + answer["error"].get<std::string>());
    return answer;
}

PeerPrograms::Folder::Folder()
{
    std::string name = (std::filesystem::temp_directory_path() / "pictureqvr-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
        throw standin::Error("cannot make a temporary folder");
    path = name;
}

PeerPrograms::Folder::~Folder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

PeerPrograms::PeerPrograms()
{
    // A peer that has ended shows when its answer is missing.
    std::signal(SIGPIPE, SIG_IGN);
    // Peers keep freed memory as the bench itself does.
    setenv("MALLOC_MMAP_MAX_", "0", 1);
    setenv("MALLOC_TRIM_THRESHOLD_", "-1", 1);
    setenv("OMP_NUM_THREADS", "1", 1);
    const std::filesystem::path built =
        std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "peers";
    std::vector<std::filesystem::path> files;
    if (std::filesystem::is_directory(built))
        for (const auto& entry : std::filesystem::directory_iterator(built))
            if (entry.path().filename().string().starts_with("peer_"))
                files.push_back(entry.path());
    if (files.empty())
        throw standin::Error("there are no peers in " + built.string() + "; ./dev bench --peers builds them");
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files)
        programs.push_back(std::make_unique<PeerProgram>(file));
}

std::vector<PeerWay> PeerPrograms::prepare(const std::string& work, const Job& job,
                                           std::vector<std::string>& failures)
{
    const Question& question = job.question.value();
    nlohmann::json task = question.settings;
    task["work"] = work;
    task["width"] = question.width;
    task["height"] = question.height;
    task["inputs"] = nlohmann::json::array();
    for (std::size_t index = 0; index < question.inputs.size(); ++index)
    {
        const std::filesystem::path path = folder.path / ("input-" + std::to_string(index));
        standin::writeFile(path.string(), question.inputs[index]());
        task["inputs"].push_back(path.string());
    }

    const Bytes wanted = job.answer();
    std::vector<PeerWay> ways;
    const auto attempt = [&](const std::string& who, auto action) {
        try
        {
            action();
        }
        catch (const standin::Error& error)
        {
            failures.push_back(who + ": " + error.what());
        }
    };
    for (const auto& program : programs)
        attempt(work, [&] {
            const nlohmann::json offered = program->ask({{"prepare", task}});
            for (const std::string name : offered["ways"])
                attempt(name, [&] {
                    const std::filesystem::path result = folder.path / "result";
                    program->ask({{"save", name}, {"to", result.string()}});
                    const std::string difference =
                        differenceBetween(wanted, standin::readFile(result.string()), question.colorsOnly);
                    ways.push_back(
                        {name, difference, [peer = program.get(), name](int times) {
                             return peer->ask({{"run", name}, {"times", times}})["seconds"].get<double>();
                         }});
                });
        });
    return ways;
}

} // namespace bench
