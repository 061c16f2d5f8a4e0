/// \file
/// What the peer programs share: they stay alive and take turns with the plug-in, told by lines of JSON on
/// their standard input, each answered by one line.
///
///     {"prepare": TASK}               -> {"ways": ["OpenCV max", ...]}, empty for work that it does not do
///     {"run": "WAY", "times": 3}      -> {"seconds": 0.0051}, processor time of one run, the average
///     {"save": "WAY", "to": "FILE"}   -> {}, after one run on fresh inputs
///
/// A TASK is {"work", "width", "height", "inputs": [files], ...}. Pictures are files of rows without padding,
/// four bytes a pixel: A, R, G, B. Everything that is not in "seconds" goes untimed.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace peers
{

using Bytes = std::vector<std::uint8_t>;

struct Task
{
    int width = 0;
    int height = 0;
    std::vector<Bytes> inputs;
    nlohmann::json settings; ///< the whole request, with what is particular to a kind of work

    std::size_t pixels() const
    {
        return static_cast<std::size_t>(width) * height;
    }
};

/// One way to do a task. What `run` allocates must be touched before and kept.
struct Way
{
    std::string name;
    std::function<void()> run;
    std::function<Bytes()> result;      ///< what the last run has made, as the plug-in would give it
    std::function<void()> restore = {}; ///< for ways that change their input
};

/// Ways to do a task; empty where a task has settings that none of them can follow.
using Offer = std::function<std::vector<Way>(const Task&)>;

/// Answers requests until standard input ends; the names of all ways begin with `library`. Gives the exit
/// status.
int serve(const std::string& library, const std::map<std::string, Offer>& offers);

/// The bytes of numbers, as results are compared.
template <class Number>
Bytes bytesOf(const std::vector<Number>& numbers)
{
    const auto* first = reinterpret_cast<const std::uint8_t*>(numbers.data());
    return Bytes(first, first + numbers.size() * sizeof(Number));
}

/// Where the bars of a waveform end that is drawn from the sums of each column's positive and negative
/// samples: row of the negative value and row of the positive one for each column.
Bytes waveformBars(const Task& task, const std::vector<std::int32_t>& positive,
                   const std::vector<std::int32_t>& negative);
/// Column `x` of a waveform has the samples from columnStart(x) to columnStart(x + 1).
std::size_t columnStart(const Task& task, int column);

} // namespace peers
