#pragma once

#include "cli/host_choice.h"

#include <cstdint>
#include <string>
#include <vector>

namespace cli
{

/// What a user asks for with `pictureqvr run`.
struct RunRequest
{
    std::string program; ///< its file
    std::vector<std::string> arguments;
    std::vector<std::string> files; ///< "NAME=PATH": where the file lies that the program calls NAME
    std::uint64_t steps = 0;        ///< after which it is stopped; 0: never
};

/// Runs a program of the host's language. Throws script::Failure for what goes wrong in it.
void run(const HostChoice& choice, const RunRequest& request);

} // namespace cli
