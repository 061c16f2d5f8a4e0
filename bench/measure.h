/// \file
/// Times a piece of work in turn with a plain memcpy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

namespace bench
{

/// Work to be timed. Only `run` counts; `reset` gives the result back, so that the next run finds its memory
/// touched.
struct Job
{
    std::function<void()> run;
    std::function<void()> reset = {};
    double items = 0; ///< pixels or samples that one run processes
    double bytes = 0; ///< bytes that one run has to read and write
};

struct Best
{
    double best = 0;
    double median = 0;
};

struct Measurement
{
    int rounds = 0;
    Best seconds;       ///< of one run
    Best memcpySeconds; ///< of a memcpy that moves as many bytes (half of them read, half written)
    Best ratio;         ///< run to memcpy: best to best, and the median of the rounds
};

struct Effort
{
    int rounds = 15;           ///< rounds when time allows
    double secondsPerRow = 30; ///< fewer rounds, but at least one, when they would take longer
};

/// Memory for the memcpy, kept and touched beforehand.
class CopyBuffers
{
public:
    void reserve(std::size_t size);
    void copy(std::size_t size);
    void free();
    /// Processor time of a copy, the best of some.
    double secondsToCopy(std::size_t size);

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

/// Processor time of this process in seconds: other programs on the machine do not count.
double processSeconds();

/// Runs once to warm up, then `effort.rounds` rounds of work and memcpy. Long rows say on stderr how far they
/// are.
Measurement measure(const std::string& name, const Job& job, const Effort& effort, CopyBuffers& buffers);

/// Text on stderr that overwrites itself, for what takes longer than a second.
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
