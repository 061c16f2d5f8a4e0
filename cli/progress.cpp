#include "cli/progress.h"

#include <algorithm>
#include <iostream>
#include <unistd.h>

namespace cli
{

namespace
{

constexpr const char* clearedLine = "\r\x1b[K";

/// "8 s", "2 min 5 s".
std::string durationText(std::chrono::seconds duration)
{
    constexpr long minute = 60;
    const auto seconds = static_cast<long>(duration.count());
    const std::string rest = std::to_string(seconds % minute) + " s";
    return seconds < minute ? rest : std::to_string(seconds / minute) + " min " + rest;
}

} // namespace

bool isWatched()
{
    return isatty(STDERR_FILENO) != 0;
}

Phase::Phase(const std::string& phaseText, bool quiet) : text(phaseText)
{
    if (!quiet && isWatched())
        clock = std::thread([this] { show(); });
}

Phase::~Phase()
{
    if (!clock.joinable())
        return;
    {
        const std::lock_guard lock(mutex);
        ended = true;
    }
    ends.notify_one();
    clock.join();
    std::cerr << clearedLine << std::flush;
}

void Phase::print(const std::string& line)
{
    const std::lock_guard lock(mutex);
    if (clock.joinable())
        std::cerr << clearedLine << std::flush;
    std::cout << line << "\n";
}

void Phase::show()
{
    std::unique_lock lock(mutex);
    std::cerr << clearedLine << text << std::flush;
    for (std::chrono::seconds passed{1};
         !ends.wait_for(lock, std::chrono::seconds(1), [this] { return ended; }); ++passed)
        std::cerr << clearedLine << text << ", " << durationText(passed) << std::flush;
}

ProgressBar::ProgressBar(std::size_t totalCount, bool quiet) : total(totalCount), shown(!quiet && isWatched())
{
}

ProgressBar::~ProgressBar()
{
    hide();
}

void ProgressBar::show(std::size_t done) const
{
    if (!shown)
        return;
    constexpr std::size_t width = 30;
    const std::size_t filled = width * done / std::max<std::size_t>(total, 1);
    std::cerr << clearedLine << '[' << std::string(filled, '#') << std::string(width - filled, ' ') << "] "
              << done << " of " << total;
    if (done != 0)
    {
        const auto left = (Clock::now() - start) / done * (total - done);
        std::cerr << ", " << durationText(std::chrono::ceil<std::chrono::seconds>(left)) << " left";
    }
    std::cerr << std::flush;
}

void ProgressBar::hide() const
{
    if (shown)
        std::cerr << clearedLine << std::flush;
}

} // namespace cli
