/// \file
/// What is measured: every method at least once, and the inputs that are worst for it.
#pragma once

#include "bench/measure.h"
#include "bench/peers.h"
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
    const Peer* peer; ///< null where nobody does the same
    std::function<Job(Workshop&)> prepare;
    Unit unit = Unit::Pixels;
};

/// All rows, in the order of the table.
std::vector<Row> allRows();

/// The declarations that the plug-in has registered and that no row prepared so far calls.
std::vector<std::string> methodsWithoutRow(const Workshop& workshop);

} // namespace bench
