#include "bench/measure.h"

#include "host/error.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <unistd.h>
#include <vector>

namespace bench
{

namespace
{

/// Short runs are repeated within a round until they have taken this long.
constexpr double secondsPerRound = 0.004;

double secondsOf(const std::function<void()>& work)
{
    const double start = processSeconds();
    work();
    return processSeconds() - start;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Best bestAndMedian(const std::vector<double>& values)
{
    return {*std::min_element(values.begin(), values.end()), median(values)};
}

double secondsOfRun(const Job& job)
{
    const double seconds = secondsOf(job.run);
    if (job.reset)
        job.reset();
    return std::max(seconds, 1e-9);
}

template <class Once>
double average(int repetitions, Once once)
{
    double sum = 0;
    for (int repetition = 0; repetition < repetitions; ++repetition)
        sum += once();
    return sum / repetitions;
}

} // namespace

void CopyBuffers::reserve(std::size_t size)
{
    constexpr std::size_t alignment = 64;
    if (size <= capacity)
        return;
    free();
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    source.reset(static_cast<std::uint8_t*>(std::aligned_alloc(alignment, rounded)));
    target.reset(static_cast<std::uint8_t*>(std::aligned_alloc(alignment, rounded)));
    if (!source || !target)
        throw standin::Error("no memory for a memcpy of " + std::to_string(size) + " bytes");
    std::memset(source.get(), 1, rounded);
    std::memset(target.get(), 2, rounded);
    capacity = rounded;
}

void CopyBuffers::copy(std::size_t size)
{
    std::memcpy(target.get(), source.get(), size);
    // The copy is never read, and must be made all the same.
    asm volatile("" : : "r"(target.get()) : "memory");
}

double CopyBuffers::secondsToCopy(std::size_t size)
{
    constexpr int tries = 15;
    reserve(size);
    double best = secondsOf([&] { copy(size); });
    for (int attempt = 1; attempt < tries; ++attempt)
        best = std::min(best, secondsOf([&] { copy(size); }));
    return best;
}

void CopyBuffers::free()
{
    source.reset();
    target.reset();
    capacity = 0;
}

double processSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

Measurement measure(const std::string& name, const Job& job, const Effort& effort, CopyBuffers& buffers)
{
    Progress progress(name);
    progress.show("warming up");
    const auto copySize = static_cast<std::size_t>(job.bytes / 2);
    buffers.reserve(copySize);
    const auto copy = [&] { buffers.copy(copySize); };
    copy();
    // The first run meets memory never touched before, so only the second one tells how long it takes.
    double once = secondsOfRun(job);
    if (once < 1)
        once = secondsOfRun(job);

    const int repetitions = std::clamp(static_cast<int>(secondsPerRound / once), 1, 1000);
    const int affordable = static_cast<int>(effort.secondsPerRow / (once * repetitions));
    const int rounds = std::clamp(affordable, 1, std::max(effort.rounds, 1));

    std::vector<double> seconds;
    std::vector<double> copies;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round)
    {
        progress.show("round " + std::to_string(round + 1) + " of " + std::to_string(rounds));
        seconds.push_back(average(repetitions, [&] { return secondsOfRun(job); }));
        copies.push_back(average(repetitions, [&] { return secondsOf(copy); }));
        ratios.push_back(seconds.back() / copies.back());
    }

    Measurement result;
    result.rounds = rounds;
    result.seconds = bestAndMedian(seconds);
    result.memcpySeconds = bestAndMedian(copies);
    result.ratio = {result.seconds.best / result.memcpySeconds.best, median(ratios)};
    return result;
}

double Progress::wallSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void Progress::show(const std::string& state)
{
    if (wallSeconds() - started < 1)
        return;
    const std::string text = name + ": " + state;
    const bool terminal = isatty(STDERR_FILENO) != 0;
    // A log gets one line for each slow row, a terminal one that moves.
    if (terminal)
        std::fprintf(stderr, "\r%-*s", static_cast<int>(shown), text.c_str());
    else if (shown == 0)
        std::fprintf(stderr, "%s\n", text.c_str());
    shown = text.size();
}

Progress::~Progress()
{
    if (shown != 0 && isatty(STDERR_FILENO) != 0)
        std::fprintf(stderr, "\r%-*s\r", static_cast<int>(shown), "");
}

} // namespace bench
