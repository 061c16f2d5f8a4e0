/// \file
/// The programs of bench/peers, and how their results compare with the plug-in's.
#pragma once

#include "bench/job.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace bench
{

/// A peer program that runs until this is destroyed.
class PeerProgram
{
public:
    explicit PeerProgram(const std::filesystem::path& file);
    ~PeerProgram();
    PeerProgram(const PeerProgram&) = delete;
    PeerProgram& operator=(const PeerProgram&) = delete;

    /// Sends a request and waits for its answer. Throws standin::Error when there is none, or an error.
    nlohmann::json ask(const nlohmann::json& request);

private:
    struct Close
    {
        void operator()(std::FILE* stream) const
        {
            std::fclose(stream);
        }
    };

    std::string name;
    pid_t process = 0;
    std::unique_ptr<std::FILE, Close> requests;
    std::unique_ptr<std::FILE, Close> answers;
};

/// One way in which a peer does a row's work.
struct PeerWay
{
    std::string name;
    std::string difference; ///< how its result differs from the plug-in's; empty: not at all
    std::function<double(int times)> secondsOfRun;
};

/// All peer programs that were built.
class PeerPrograms
{
public:
    PeerPrograms();

    /// Asks all programs for `work`, and compares their results with the plug-in's. Ways that give something
    /// else are left out and added to `failures`. They hold until the next call.
    std::vector<PeerWay> prepare(const std::string& work, const Job& job, std::vector<std::string>& failures);

private:
    /// A folder of its own for pictures on their way from process to process.
    struct Folder
    {
        Folder();
        ~Folder();
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;

        std::filesystem::path path;
    };

    Folder folder;
    std::vector<std::unique_ptr<PeerProgram>> programs;
};

} // namespace bench
