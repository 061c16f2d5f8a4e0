/// \file
/// Times pieces of work in turn, so that whatever else the machine does meets all of them alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench
{

using Bytes = std::vector<std::uint8_t>;

struct Best
{
    double best = 0;
    double median = 0;
};

/// How long one of the contestants took.
struct Timing
{
    Best seconds; ///< of one run
    Best ratio;   ///< to the yardstick: best to best, and the median of the rounds
    int rounds = 0;
};

struct Effort
{
    int rounds = 40;           ///< rounds when they do not settle earlier
    double secondsPerRow = 60; ///< fewer rounds, but at least one, when they would take longer
};

/// Somebody who takes turns.
struct Contestant
{
    /// Does the work so many times in a row; gives the processor time of one time, the average.
    std::function<double(int times)> secondsOfRun;
    /// Whether it may sit out the later rounds once it is clearly slower than the fastest such contestant.
    bool mayRest = false;
};

/// Lets all contestants run in turn, round after round until the best times and the medians settle. The first
/// contestant is the yardstick of the others. Long rows say on stderr how far they are.
std::vector<Timing> measureInTurn(const std::string& row, const std::vector<Contestant>& contestants,
                                  const Effort& effort);

/// Memory for the memcpy, kept and touched beforehand.
class CopyBuffers
{
public:
    void reserve(std::size_t size);
    void copy(std::size_t size);
    void free();

private:
    struct Release
    {
        void operator()(std::uint8_t* block) const
        {
            std::free(block);
        }
    };
    std::unique_ptr<std::uint8_t, Release> source;
    std::unique_ptr<std::uint8_t, Release> target;
    std::size_t capacity = 0;
};

/// Processor time of `work` in seconds: other programs on the machine do not count.
double secondsOf(const std::function<void()>& work);

/// Text on stderr that overwrites itself, for what takes longer than a second; nothing where stderr is no
/// terminal.
class Progress
{
public:
    explicit Progress(std::string rowName) : name(std::move(rowName)), started(wallSeconds())
    {
    }
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void show(const std::string& state);

private:
    static double wallSeconds();

    std::string name;
    double started;
    std::size_t shown = 0;
};

} // namespace bench
