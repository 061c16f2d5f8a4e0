/// \file
/// What commands tell about themselves on a terminal, and take back when it is over.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace cli
{

/// Whether somebody looks at what goes to stderr.
bool isWatched();

/// "reading photo.png", as long as this lives, with the time that it takes.
class Phase
{
public:
    Phase(const std::string& text, bool quiet);
    ~Phase();
    Phase(const Phase&) = delete;
    Phase& operator=(const Phase&) = delete;

    /// Prints a line to stdout in the place of the phase, which the next second shows again below it.
    void print(const std::string& line);

private:
    void show();

    const std::string text;
    std::mutex mutex;
    std::condition_variable ends;
    bool ended = false;
    std::thread clock;
};

/// A bar with the time left, in the last line of the terminal.
class ProgressBar
{
public:
    ProgressBar(std::size_t total, bool quiet);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::size_t done) const;
    /// Makes room for other lines.
    void hide() const;

private:
    using Clock = std::chrono::steady_clock;

    const std::size_t total;
    const bool shown;
    const Clock::time_point start = Clock::now();
};

} // namespace cli
