/// \file
/// Shows measurements as a table, aligned or in Markdown, or as JSON.
#pragma once

#include "bench/rows.h"

#include <nlohmann/json_fwd.hpp>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace bench
{

/// The plug-in with so many lanes at most.
struct LaneTiming
{
    int lanes = 0;
    Timing timing;
};

struct PeerTiming
{
    std::string name;
    std::string difference; ///< how its result differs from the plug-in's; empty: not at all
    Timing timing;
};

/// A row measured at one size.
struct Result
{
    int width = 0;
    int height = 0;
    double items = 0;
    double bytes = 0;
    Timing memcpy;
    std::vector<LaneTiming> plugIn;
    std::vector<PeerTiming> peers;
    std::set<std::string> calls; ///< the methods that it calls, or the filter that it runs
    std::string failure;         ///< what went wrong; empty: nothing

    /// Millions of pixels (samples, calls) in a second of the plug-in, with the first number of lanes.
    double best() const
    {
        return items / plugIn.front().timing.seconds.best / 1e6;
    }
    /// The peer with the best time, if there is any.
    const PeerTiming* fastestPeer() const;
};

/// A table that prints each row as soon as it is known.
class Table
{
public:
    enum class Style
    {
        Aligned,
        Markdown
    };

    Table(Style tableStyle, const std::vector<int>& laneLimits, bool withPeers);

    void printHead() const;
    void printRow(const Row& row, const Result& result);
    /// What the columns mean.
    void printLegend() const;

private:
    struct Column
    {
        std::string title;
        int width;
        std::string markdownTitle; ///< empty: left out there, where width is dear
    };

    void printCells(const std::vector<std::string>& cells) const;
    std::vector<std::string> notes(const Row& row, const Result& result) const;

    Style style;
    bool peers;
    std::vector<Column> columns;
    std::map<std::string, Result> printed; ///< by row name, for rows that are compared with others
};

/// The processor, the day and what was measured, in one line.
std::string describeRun(const std::string& command);

void printGrowthHead(const std::vector<double>& megapixels);
/// One line with the speed at every size, and how much longer a pixel takes at the largest than at the
/// fastest one.
void printGrowthRow(const Row& row, const std::vector<Result>& results);

nlohmann::json toJson(const Row& row, const Result& result);

} // namespace bench
