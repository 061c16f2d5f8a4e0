#include "bench/measure.h"

#include "host/error.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <unistd.h>

namespace bench
{

namespace
{

/// Short runs are repeated within a turn until they have taken this long.
constexpr double secondsPerTurn = 0.01;
/// A turn of runs shorter than this begins with one that does not count, since the others have used the
/// caches and the processor may have slept.
constexpr double secondsWorthWarming = 0.2;
/// Times count as settled when so many more rounds have not moved them by more than this share.
constexpr int roundsToSettle = 5;
constexpr double settledShare = 0.01;
/// Who may rest does so after some rounds, when so much slower than the fastest.
constexpr int roundsBeforeRest = 3;
constexpr double slowEnoughToRest = 1.5;

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

/// A contestant and the times of its turns.
struct Player
{
    explicit Player(const Contestant& chosen) : contestant(chosen)
    {
        // The first run meets memory never touched before, so only the second one tells how long it takes.
        once = timeOf(1);
        if (once < 1)
            once = timeOf(1);
        times = std::clamp(static_cast<int>(secondsPerTurn / once), 1, 1000);
    }

    /// Gives about how long the turn took.
    double takeTurn()
    {
        double warming = 0;
        if (once < secondsWorthWarming)
            warming = timeOf(1);
        seconds.push_back(timeOf(times));
        return warming + seconds.back() * times;
    }

    /// Whether the last rounds have changed nothing.
    bool settled() const
    {
        if (resting)
            return true;
        if (seconds.size() <= roundsToSettle)
            return false;
        const Best now = bestAndMedian(seconds);
        const Best before = bestAndMedian({seconds.begin(), seconds.end() - roundsToSettle});
        const auto close = [](double a, double b) { return std::abs(a - b) <= settledShare * b; };
        return close(now.best, before.best) && close(now.median, before.median);
    }

    const Contestant& contestant;
    double once = 0;
    int times = 1;
    bool resting = false;
    std::vector<double> seconds;

private:
    double timeOf(int runs) const
    {
        return std::max(contestant.secondsOfRun(runs), 1e-9);
    }
};

void letSlowOnesRest(std::vector<Player>& players)
{
    double fastest = std::numeric_limits<double>::infinity();
    for (const Player& player : players)
        if (player.contestant.mayRest)
            fastest = std::min(fastest, bestAndMedian(player.seconds).best);
    for (Player& player : players)
        if (player.contestant.mayRest && bestAndMedian(player.seconds).best > slowEnoughToRest * fastest)
            player.resting = true;
}

Timing timingOf(const Player& player, const Player& yardstick)
{
    std::vector<double> ratios;
    for (std::size_t round = 0; round < player.seconds.size(); ++round)
        ratios.push_back(player.seconds[round] / yardstick.seconds[round]);
    Timing timing;
    timing.rounds = static_cast<int>(player.seconds.size());
    timing.seconds = bestAndMedian(player.seconds);
    timing.ratio = {timing.seconds.best / bestAndMedian(yardstick.seconds).best, median(ratios)};
    return timing;
}

double processSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

double secondsOf(const std::function<void()>& work)
{
    const double start = processSeconds();
    work();
    return processSeconds() - start;
}

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

void CopyBuffers::free()
{
    source.reset();
    target.reset();
    capacity = 0;
}

std::vector<Timing> measureInTurn(const std::string& row, const std::vector<Contestant>& contestants,
                                  const Effort& effort)
{
    Progress progress(row);
    std::vector<Player> players;
    players.reserve(contestants.size());
    for (const Contestant& contestant : contestants)
    {
        progress.show("warming up");
        players.emplace_back(contestant);
    }

    double secondsSpent = 0;
    for (int round = 1; round <= effort.rounds; ++round)
    {
        progress.show("round " + std::to_string(round));
        double secondsOfRound = 0;
        for (Player& player : players)
            if (!player.resting)
                secondsOfRound += player.takeTurn();
        secondsSpent += secondsOfRound;
        if (round == roundsBeforeRest)
            letSlowOnesRest(players);
        const bool settled = std::all_of(players.begin(), players.end(),
                                         [](const Player& player) { return player.settled(); });
        if (settled || secondsSpent + secondsOfRound > effort.secondsPerRow)
            break;
    }

    std::vector<Timing> timings;
    timings.reserve(players.size());
    for (const Player& player : players)
        timings.push_back(timingOf(player, players.front()));
    return timings;
}

double Progress::wallSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void Progress::show(const std::string& state)
{
    if (isatty(STDERR_FILENO) == 0 || wallSeconds() - started < 1)
        return;
    const std::string text = name + ": " + state;
    std::fprintf(stderr, "\r%-*s", static_cast<int>(shown), text.c_str());
    shown = text.size();
}

Progress::~Progress()
{
    if (shown != 0)
        std::fprintf(stderr, "\r%-*s\r", static_cast<int>(shown), "");
}

} // namespace bench
