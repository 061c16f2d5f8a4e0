/// \file
/// Where results go: names made of patterns, what must not be overwritten, and how pictures are stored.
#pragma once

#include "cli/sources.h"
#include "media/image.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace cli
{

/// What the help of such commands says of files.
extern const char* const outputNotes;

/// The options of commands that write pictures.
struct OutputChoice
{
    std::string pattern; ///< names of many files' results, such as "small/{name}.png"; empty: there is one
    std::string format;  ///< empty: as the file's name says
    std::optional<int> quality;
    std::optional<int> compression;
    bool force = false;  ///< files that exist are overwritten
    bool alpha = false;  ///< alpha is stored in any case
    bool opaque = false; ///< alpha is never stored
    bool quiet = false;
    bool verbose = false;
    unsigned jobs = 0; ///< files at a time; 0: as many as there are processors

    void addOptions(CLI::App& command);
};

/// One call: what it reads, and where its result goes.
struct Task
{
    std::vector<std::string> inputs;          ///< those of the command line, then those that the call names
    std::string output;                       ///< "-": standard output; empty: nowhere
    std::map<std::string, std::string> saves; ///< files that get a variable, by its name
};

/// Whether nothing else may go there.
bool writesToStandardOutput(const Task& task);

/// A task for each of many files. `saves` are patterns, too.
std::vector<Task> tasksFor(const std::vector<std::string>& inputs, const std::string& pattern,
                           const std::map<std::string, std::string>& saves);

/// Throws standin::Error unless all results can be stored as chosen, each in a file of its own and none in
/// the place of something that is to stay. Makes the folders that they go to, where there are many.
void checkOutputs(const std::vector<Task>& tasks, const OutputChoice& choice, bool pictures);

/// Writes a picture. Where it has no alpha of its own it gets that of `source`, if there is one.
void writePicture(const OutputChoice& choice, const std::string& path, const standin::Picture& picture,
                  const Source* source);

/// Writes what is no picture.
void writeBytes(const std::string& path, std::span<const std::uint8_t> bytes);

} // namespace cli
