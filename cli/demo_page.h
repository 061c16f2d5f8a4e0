/// \file
/// The demo's page: what stands on it, and how that becomes HTML.
#pragma once

#include "cli/demo_run.h"

#include <string>
#include <vector>

namespace cli
{

/// A picture on the page.
struct Shown
{
    std::string file; ///< beside the page
    int width = 0;    ///< of the file
    int height = 0;
    int fullWidth = 0; ///< of the picture that it shows
    int fullHeight = 0;
    std::string caption;
    std::string alternative; ///< for those who cannot see it
};

/// One example.
struct Card
{
    std::string name;
    std::string shows;
    std::string code;
    std::vector<Shown> pictures;
    DemoOutcome outcome;
    std::string failure; ///< why it has no result; empty where it has
};

struct CardFamily
{
    std::string title;
    std::vector<Card> cards;
};

struct DemoPage
{
    std::string photo; ///< its file
    Shown original;
    std::string artefact;
    std::string summary;  ///< how much of the plug-in is shown
    int largestWidth = 0; ///< wider pictures are scaled down
    std::vector<CardFamily> families;
    std::vector<std::string> missing; ///< declarations that no card is about
};

/// A row of the table of times.
struct TimeRow
{
    std::string call;
    standin::CallTimes times;
};
/// The calls of a method or class: single ones while those are few, else all of a method together.
std::vector<TimeRow> timeRows(const std::string& name, const std::vector<TimedCall>& calls);

/// "8.97 ms", "31 µs".
std::string timeText(std::chrono::steady_clock::duration time);

std::string htmlOf(const DemoPage& page);

} // namespace cli
