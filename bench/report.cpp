#include "bench/report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace bench
{

namespace
{

constexpr int nameWidth = 32;

const char* unitName(Unit unit)
{
    switch (unit)
    {
    case Unit::Samples:
        return "sample";
    case Unit::Calls:
        return "call";
    default:
        return "pixel";
    }
}

/// "3.1" or a dash, right-aligned.
std::string cell(double value, int width, int decimals)
{
    char text[32];
    if (std::isfinite(value))
        std::snprintf(text, sizeof text, "%*.*f", width, decimals, value);
    else
        std::snprintf(text, sizeof text, "%*s", width, "-");
    return text;
}

/// Speeds keep three digits.
std::string speedCell(double speed, int width)
{
    return cell(speed, width, speed < 10 ? 2 : speed < 100 ? 1 : 0);
}

double ratio(double dividend, double divisor)
{
    return divisor > 0 ? dividend / divisor : NAN;
}

} // namespace

void printHead()
{
    std::printf("%-*s %8s %8s %6s | %7s %7s | %6s %6s | %6s %6s |\n", nameWidth, "", "best", "median",
                "bytes", "memcpy", "memcpy", "peer", "x peer", "4-byte", "x");
    std::printf("%-*s %8s %8s %6s | %7s %7s | %6s %6s | %6s %6s |\n", nameWidth, "row", "Mpx/s", "Mpx/s",
                "per px", "best", "median", "Mpx/s", "", "Mpx/s", "4-byte");
}

void printRow(const Row& row, const Result& result, int wantedRounds)
{
    if (!result.failure.empty())
    {
        std::printf("%-*s %s\n", nameWidth, row.name.c_str(), result.failure.c_str());
        return;
    }
    const bool moves = result.bytes > 0;
    const Measurement& measured = result.measurement;
    const double peerBest = row.peer == nullptr ? NAN : row.peer->best;
    const double peerFourByte = row.peer == nullptr ? NAN : row.peer->fourByte;
    std::printf("%-*s %s %s %s | %s %s | %s %s | %s %s |", nameWidth, row.name.c_str(),
                speedCell(result.best(), 8).c_str(), speedCell(result.median(), 8).c_str(),
                cell(moves ? result.bytes / result.items : NAN, 6, 1).c_str(),
                cell(moves ? measured.ratio.best : NAN, 7, 2).c_str(),
                cell(moves ? measured.ratio.median : NAN, 7, 2).c_str(), speedCell(peerBest, 6).c_str(),
                cell(ratio(result.best(), peerBest), 6, 2).c_str(), speedCell(peerFourByte, 6).c_str(),
                cell(ratio(result.best(), peerFourByte), 6, 2).c_str());
    if (row.peer != nullptr && result.best() < peerFourByte)
        std::printf(" BEHIND %s", std::string(row.peer->fastest).c_str());
    else if (row.peer != nullptr && result.best() < peerBest)
        std::printf(" behind %s", std::string(row.peer->fastest).c_str());
    if (row.unit != Unit::Pixels)
        std::printf(" (%ss)", unitName(row.unit));
    if (measured.rounds < wantedRounds)
        std::printf(" (%d round%s only)", measured.rounds, measured.rounds == 1 ? "" : "s");
    std::printf("\n");
    std::fflush(stdout);
}

void printLegend(CopyBuffers& buffers)
{
    constexpr std::size_t size = 48'000'000;
    std::printf(
        "\nProcessor time, one thread; pictures in memory touched before. \"memcpy\": time over that of a "
        "memcpy that moves\nas many bytes, run in turn; below 1 is faster than copying. \"peer\": the "
        "fastest "
        "64-bit library, often on 3 bytes\nor planes; \"4-byte\": the fastest on 4 bytes. They ran once, "
        "good "
        "to about 15 %%, where a 32-bit memcpy of 48 MB took\n4.0 ms; here it takes %.1f ms. Compare only on "
        "a "
        "machine that does nothing else.\n",
        buffers.secondsToCopy(size) * 1e3);
}

void printGrowthHead(const std::vector<double>& megapixels)
{
    std::printf("%-*s", nameWidth, "Mpx/s (time over memcpy) at");
    for (const double size : megapixels)
        std::printf(" %12.4g Mpx", size);
    std::printf("   growth\n");
}

void printGrowthRow(const Row& row, const std::vector<Result>& results)
{
    std::printf("%-*s", nameWidth, row.name.c_str());
    double fastest = 0;
    for (const Result& result : results)
    {
        if (!result.failure.empty())
        {
            std::printf(" %16s", "failed");
            continue;
        }
        fastest = std::max(fastest, result.best());
        const std::string beside =
            result.bytes > 0 ? "(" + cell(result.measurement.ratio.best, 0, 2) + ")" : "";
        std::printf(" %s %8s", speedCell(result.best(), 7).c_str(), beside.c_str());
    }
    const bool known = !results.empty() && results.back().failure.empty();
    std::printf(" %s\n", cell(known ? fastest / results.back().best() : NAN, 8, 2).c_str());
    for (const Result& result : results)
        if (!result.failure.empty())
            std::printf("  %d x %d: %s\n", result.width, result.height, result.failure.c_str());
    std::fflush(stdout);
}

nlohmann::json toJson(const Row& row, const Result& result)
{
    nlohmann::json json = {
        {"row", row.name}, {"unit", unitName(row.unit)}, {"width", result.width}, {"height", result.height}};
    if (!result.failure.empty())
    {
        json["failure"] = result.failure;
        return json;
    }
    const Measurement& measured = result.measurement;
    json["rounds"] = measured.rounds;
    json["items"] = result.items;
    json["bytes"] = result.bytes;
    json["seconds"] = {{"best", measured.seconds.best}, {"median", measured.seconds.median}};
    json["millionsPerSecond"] = {{"best", result.best()}, {"median", result.median()}};
    if (result.bytes > 0)
        json["timeOverMemcpy"] = {{"best", measured.ratio.best}, {"median", measured.ratio.median}};
    if (row.peer != nullptr)
        json["peer"] = {{"name", row.peer->fastest},
                        {"millionsPerSecond", row.peer->best},
                        {"fourByteMillionsPerSecond", row.peer->fourByte}};
    return json;
}

} // namespace bench
