/// \file
/// What a row of the table does, and what it asks others to do for comparison.
#pragma once

#include "bench/measure.h"
#include "host/values/value.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace bench
{

/// A piece of work as peers are asked for it; bench/peers/peer.h describes them.
struct Question
{
    int width = 0;
    int height = 0;
    std::vector<std::function<Bytes()>> inputs; ///< pictures as rows of A, R, G, B, and other bytes
    nlohmann::json settings = nlohmann::json::object();
    /// Whether answers are pictures, whose alpha does not count and whose colours may be a little off.
    bool colorsOnly = true;
};

/// Work to be timed. Only `run` counts; `reset` gives the result back, so that the next run finds its memory
/// touched.
struct Job
{
    std::function<void()> run;
    std::function<void()> reset = {};
    double items = 0; ///< pixels or samples that one run processes
    double bytes = 0; ///< bytes that one run has to read and write

    std::shared_ptr<standin::Value> result = {}; ///< where `run` puts its value, if it makes one
    std::optional<Question> question = {};
    std::function<Bytes()> answer = {}; ///< runs once on fresh inputs and gives what peers' results must be
};

} // namespace bench
