#pragma once

#include "cli/host_choice.h"

#include <map>
#include <string>
#include <vector>

namespace cli
{

/// What a user asks for with `pictureqvr apply`.
struct ApplyRequest
{
    std::string call;
    /// The receiver of Picture methods, what the call names as @1, @2 ..., and behind them, if anywhere, the
    /// output.
    std::vector<std::string> files;
    std::string mask;               ///< file that becomes the receiver's mask; empty: none
    std::vector<std::string> saves; ///< "NAME=FILE": where the byref memory block NAME goes
    bool alpha = false;             ///< save the alpha byte too
};

/// What a user asks for with `pictureqvr filter`.
struct FilterRequest
{
    std::string className;
    std::vector<std::string> settings; ///< "Property=value" or "Method(arguments)=value"
    std::string input;
    std::string output;
    bool alpha = false;
};

/// Makes one call on files; throws standin::Error with one clear line for everything that goes wrong.
void apply(const HostChoice& choice, const ApplyRequest& request);

/// Runs one of the filter classes on a file; throws likewise.
void filter(const HostChoice& choice, const FilterRequest& request);

} // namespace cli
