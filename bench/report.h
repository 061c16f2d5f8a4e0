/// \file
/// Shows measurements as an aligned table or as JSON.
#pragma once

#include "bench/rows.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace bench
{

/// A row measured at one size.
struct Result
{
    int width = 0;
    int height = 0;
    double items = 0;
    double bytes = 0;
    Measurement measurement;
    std::string failure; ///< what went wrong; empty: nothing

    /// Millions of pixels (samples, calls) in a second.
    double best() const
    {
        return items / measurement.seconds.best / 1e6;
    }
    double median() const
    {
        return items / measurement.seconds.median / 1e6;
    }
};

/// Prints the table's head.
void printHead();
/// Prints one line as soon as it is known; `wantedRounds` tells whether it had to make do with fewer.
void printRow(const Row& row, const Result& result, int wantedRounds);
/// What the columns mean, and how this machine compares with the one that the peers ran on.
void printLegend(CopyBuffers& buffers);

void printGrowthHead(const std::vector<double>& megapixels);
/// One line with the speed at every size, and how much longer a pixel takes at the largest than at the
/// fastest one.
void printGrowthRow(const Row& row, const std::vector<Result>& results);

nlohmann::json toJson(const Row& row, const Result& result);

} // namespace bench
