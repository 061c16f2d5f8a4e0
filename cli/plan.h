/// \file
/// What is known of a call before it is made: what it is made on, what it gives, and so what its files are.
#pragma once

#include "cli/outputs.h"
#include "script/syntax.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace cli
{

/// What calls name the picture that they are made on.
constexpr const char* receiverName = "photo";

/// 2 for "2", nothing for a name that is no number.
std::optional<std::size_t> fileNumber(const std::string& name);

enum class Gives
{
    Picture, ///< a new one, or the one that it was made on as it has become
    Text,
    Lines,  ///< values that are printed
    Unknown ///< what a function of the language gives
};

struct Plan
{
    /// Throws script::CallFailure for what is no call.
    Plan(const std::string& text, const standin::Registered& registered);

    script::Program call;
    bool onPicture = false; ///< it needs a picture that it is made on
    std::string name;       ///< what gives the result, as declared
    Gives gives = Gives::Unknown;
    /// The result is a picture that has its source's alpha, rather than one of what that holds.
    bool keepsAlpha = false;

    /// What the files of the command line are to it. Throws Error where they are too few or too many.
    std::vector<Task> tasks(const std::vector<std::string>& files, const std::string& pattern,
                            const std::map<std::string, std::string>& saves) const;

private:
    std::size_t inputCount() const;
    Task single(std::vector<std::string> files) const;
    void checkMany(const std::vector<std::string>& files) const;

    bool needsOutput = false;
};

} // namespace cli
