#include "bench/report.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>

namespace bench
{

namespace
{

constexpr int nameWidth = 32;
constexpr int plainWidth = 0;

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

/// "2310 (2105)"
std::string speeds(double items, Best seconds)
{
    return speedCell(items / seconds.best / 1e6, plainWidth) + " (" +
           speedCell(items / seconds.median / 1e6, plainWidth) + ")";
}

/// "1.27 (1.31)"
std::string ratios(Best ratio)
{
    return cell(ratio.best, plainWidth, 2) + " (" + cell(ratio.median, plainWidth, 2) + ")";
}

/// How many times as fast as another.
Best ahead(const Timing& timing, const Timing& other)
{
    return {other.seconds.best / timing.seconds.best, other.seconds.median / timing.seconds.median};
}

const PeerTiming* fastest(const std::vector<PeerTiming>& peers, bool plainOnly)
{
    const PeerTiming* found = nullptr;
    for (const PeerTiming& peer : peers)
        if ((!plainOnly || peer.name.starts_with("C++")) &&
            (found == nullptr || peer.timing.seconds.best < found->timing.seconds.best))
            found = &peer;
    return found;
}

std::string joined(const std::vector<std::string>& parts, const std::string& between)
{
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : between) + part;
    return text;
}

} // namespace

const PeerTiming* Result::fastestPeer() const
{
    return fastest(peers, false);
}

Table::Table(Style tableStyle, const std::vector<int>& laneLimits, bool withPeers)
    : style(tableStyle),
      peers(withPeers)
{
    constexpr int speedWidth = 13;
    constexpr int ratioWidth = 13;
    columns = {{"row", nameWidth, "row"}, {"memcpy", speedWidth, "memcpy"}};
    for (const int lanes : laneLimits)
    {
        const std::string title = std::to_string(lanes) + " lanes";
        columns.push_back({title, speedWidth, title});
        columns.push_back({"x memcpy", ratioWidth, "x memcpy"});
    }
    if (peers)
    {
        columns.push_back({"fastest peer", 34, "fastest peer"});
        columns.push_back({"speed", speedWidth, ""});
        columns.push_back({"x memcpy", ratioWidth, "x memcpy"});
        for (const int lanes : laneLimits)
            columns.push_back({std::to_string(lanes) + " lanes ahead", ratioWidth, ""});
        columns.push_back({"plain C++", speedWidth, ""});
        columns.push_back({"x memcpy", ratioWidth, "plain C++ x memcpy"});
    }
    columns.push_back({"notes", 0, "notes"});
}

void Table::printCells(const std::vector<std::string>& cells) const
{
    std::string line;
    for (std::size_t index = 0; index < columns.size(); ++index)
    {
        const std::string text = index < cells.size() ? cells[index] : "";
        if (style == Style::Markdown)
            line += columns[index].markdownTitle.empty() ? "" : "| " + text + " ";
        else
        {
            const auto width = static_cast<std::size_t>(columns[index].width);
            const bool leftAligned = index == 0 || columns[index].title == "fastest peer" || width == 0;
            const std::string space(width > text.size() ? width - text.size() : 0, ' ');
            line += (index == 0 ? "" : "  ") + (leftAligned ? text + space : space + text);
        }
    }
    if (style == Style::Markdown)
        line += "|";
    else
        line.erase(line.find_last_not_of(' ') + 1);
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void Table::printHead() const
{
    std::vector<std::string> titles;
    std::vector<std::string> rulers;
    for (const Column& column : columns)
    {
        titles.push_back(style == Style::Markdown ? column.markdownTitle : column.title);
        rulers.emplace_back("---");
    }
    printCells(titles);
    if (style == Style::Markdown)
        printCells(rulers);
}

void Table::printRow(const Row& row, const Result& result)
{
    const std::string unit = row.unit == Unit::Pixels ? "" : std::string(" (") + unitName(row.unit) + "s)";
    std::vector<std::string> cells = {row.name + unit};
    if (!result.failure.empty())
    {
        cells.resize(columns.size());
        cells.back() = result.failure;
        printCells(cells);
        return;
    }
    const bool moves = result.bytes > 0;
    const auto add = [&](const Timing& timing) {
        cells.push_back(speeds(result.items, timing.seconds));
        cells.push_back(moves ? ratios(timing.ratio) : "-");
    };
    cells.push_back(moves ? speeds(result.items, result.memcpy.seconds) : "-");
    for (const LaneTiming& plugIn : result.plugIn)
        add(plugIn.timing);
    if (peers)
    {
        const PeerTiming* peer = result.fastestPeer();
        const auto addPeer = [&](const PeerTiming* timing) {
            if (timing != nullptr)
                add(timing->timing);
            else
                cells.insert(cells.end(), {"-", "-"});
        };
        cells.push_back(peer == nullptr ? "-" : peer->name);
        addPeer(peer);
        for (const LaneTiming& plugIn : result.plugIn)
            cells.push_back(peer == nullptr ? "-" : ratios(ahead(plugIn.timing, peer->timing)));
        addPeer(fastest(result.peers, true));
    }
    cells.push_back(joined(notes(row, result), "; "));
    printCells(cells);
    printed[row.name] = result;
}

std::vector<std::string> Table::notes(const Row& row, const Result& result) const
{
    std::vector<std::string> texts;
    if (const PeerTiming* peer = result.fastestPeer())
    {
        std::vector<std::string> behind;
        for (const LaneTiming& plugIn : result.plugIn)
            if (ahead(plugIn.timing, peer->timing).best < 1)
                behind.push_back(std::to_string(plugIn.lanes));
        if (!behind.empty())
            texts.push_back("BEHIND with " + joined(behind, " and ") + " lanes");
        if (!peer->difference.empty())
            texts.push_back("peer inexact, " + peer->difference);
    }
    const auto whole = printed.find(row.whole);
    if (whole != printed.end())
        for (std::size_t index = 0; index < result.plugIn.size(); ++index)
            texts.push_back(
                cell(result.plugIn[index].timing.ratio.best / whole->second.plugIn[index].timing.ratio.best,
                     plainWidth, 2) +
                " x " + row.whole + " (" + std::to_string(result.plugIn[index].lanes) + " lanes)");
    constexpr int fewRounds = 3;
    if (result.memcpy.rounds < fewRounds)
        texts.push_back(std::to_string(result.memcpy.rounds) +
                        (result.memcpy.rounds == 1 ? " round" : " rounds") + " only");
    return texts;
}

void Table::printLegend() const
{
    std::printf(
        "\nMillions of pixels (samples, calls) in a second of processor time on one thread, best and "
        "(median); pictures lie in\nmemory touched before. \"x memcpy\": time over that of a memcpy that "
        "moves as many bytes, run in turn; below 1 is\nfaster than copying.\n");
    if (peers)
        std::printf(
            "Peers are 64-bit programs that take turns with the plug-in on the same picture. Their results "
            "equal the plug-in's\nunless the last column says otherwise.%s\n",
            style == Style::Markdown ? "" : " \"ahead\" is their time over the plug-in's.");
}

std::string describeRun(const std::string& command)
{
    std::string processor = "an unknown processor";
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name"))
            processor = line.substr(line.find(':') + 2);
    const std::time_t now = std::time(nullptr);
    char day[32];
    std::strftime(day, sizeof day, "%Y-%m-%d", std::gmtime(&now));
    return "`" + command + "` on " + day + ", " + processor;
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
            result.bytes > 0 ? "(" + cell(result.plugIn.front().timing.ratio.best, 0, 2) + ")" : "";
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
    const auto describe = [&](const Timing& timing) {
        nlohmann::json described = {
            {"rounds", timing.rounds},
            {"seconds", {{"best", timing.seconds.best}, {"median", timing.seconds.median}}},
            {"millionsPerSecond",
             {{"best", result.items / timing.seconds.best / 1e6},
              {"median", result.items / timing.seconds.median / 1e6}}}};
        if (result.bytes > 0)
            described["timeOverMemcpy"] = {{"best", timing.ratio.best}, {"median", timing.ratio.median}};
        return described;
    };
    json["items"] = result.items;
    json["bytes"] = result.bytes;
    json["calls"] = result.calls;
    json["memcpy"] = describe(result.memcpy);
    for (const LaneTiming& plugIn : result.plugIn)
    {
        nlohmann::json described = describe(plugIn.timing);
        described["lanes"] = plugIn.lanes;
        json["plugIn"].push_back(described);
    }
    for (const PeerTiming& peer : result.peers)
    {
        nlohmann::json described = describe(peer.timing);
        described["name"] = peer.name;
        described["difference"] = peer.difference;
        json["peers"].push_back(described);
    }
    return json;
}

} // namespace bench
