/// \file
/// What is measured: every method at least once, and the inputs that are worst for it.
#pragma once

#include "bench/job.h"
#include "bench/workshop.h"

#include <functional>
#include <string>
#include <vector>

namespace bench
{

/// What a row counts.
enum class Unit
{
    Pixels,
    Samples,
    Calls
};

struct Row
{
    std::string name;
    std::string work; ///< what peers call it; empty where nobody does the same
    std::function<Job(Workshop&)> prepare;
    Unit unit = Unit::Pixels;
    std::string whole = {}; ///< the row of the whole picture, for one that measures a rectangle
};

/// All rows, in the order of the table.
std::vector<Row> allRows();

/// The declarations that the plug-in has registered and that no row prepared so far calls.
std::vector<std::string> methodsWithoutRow(const Workshop& workshop);

} // namespace bench
