/// \file
/// Measures how fast the plug-in's methods are, in turn with a memcpy of as many bytes and with other
/// libraries.
#include "bench/peer_programs.h"
#include "bench/report.h"
#include "bench/rows.h"

#include "host/error.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <exception>
#include <malloc.h>
#include <memory>

namespace bench
{

namespace
{

struct Options
{
    std::vector<std::string> filters;
    std::string artefact = "mac";
    std::string storage = "gworld32";
    std::string resultStorage;
    std::string photo;
    std::string command = "./dev bench";
    std::vector<int> lanes;
    Effort effort;
    double megapixels = 12;
    bool peers = false;
    bool growth = false;
    bool json = false;
    bool markdown = false;
    bool list = false;
};

Setting settingOf(const Options& options)
{
    Setting setting;
    setting.artefact = standin::valueNamed<standin::Artefact>(options.artefact);
    setting.sourceStorage = standin::valueNamed<standin::Storage>(options.storage);
    // Pictures made by the plug-in have 32 bits, so 24 bits are a source's affair unless they are asked for.
    setting.resultStorage = !options.resultStorage.empty()
                                ? standin::valueNamed<standin::Storage>(options.resultStorage)
                            : options.storage == "bitmap" ? standin::Storage::Bitmap
                                                          : standin::Storage::GWorld32;
    if (options.peers && (setting.sourceStorage != standin::Storage::GWorld32 ||
                          setting.resultStorage != standin::Storage::GWorld32))
        throw standin::Error("peers are compared on pictures of the storage gworld32 only");
    return setting;
}

/// How many pixels side by side are to be measured: what was asked for, as far as the processor has it.
std::vector<int> laneLimits(const Options& options)
{
    constexpr int wide = 8;
    std::vector<int> limits = options.lanes.empty() ? std::vector{wide, 4} : options.lanes;
    if (!__builtin_cpu_supports("avx2") && std::erase(limits, wide) > 0)
        std::fprintf(stderr, "this processor has no AVX2, so there are four lanes at most\n");
    if (limits.empty())
        throw standin::Error("nothing is left to measure");
    return limits;
}

bool contains(const std::string& text, const std::string& part)
{
    const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

std::vector<Row> chosenRows(const std::vector<std::string>& filters, bool comparedOnly)
{
    std::vector<Row> rows = allRows();
    if (comparedOnly)
        std::erase_if(rows, [all = rows](const Row& row) {
            const bool compared =
                std::any_of(all.begin(), all.end(), [&](const Row& part) { return part.whole == row.name; });
            return row.work.empty() && row.whole.empty() && !compared;
        });
    for (const std::string& filter : filters)
        if (std::none_of(rows.begin(), rows.end(),
                         [&](const Row& row) { return contains(row.name, filter); }))
            throw standin::Error("no row has \"" + filter + "\" in its name; --list shows them all");
    if (!filters.empty())
        std::erase_if(rows, [&](const Row& row) {
            return std::none_of(filters.begin(), filters.end(),
                                [&](const std::string& filter) { return contains(row.name, filter); });
        });
    return rows;
}

/// A 4 : 3 picture of about so many pixels.
struct Size
{
    explicit Size(double megapixels)
        : width(static_cast<int>(std::lround(std::sqrt(megapixels * 1e6 * 4 / 3)))),
          height(static_cast<int>(std::lround(width * 3.0 / 4)))
    {
    }

    int width;
    int height;
};

class Session
{
public:
    explicit Session(const Options& chosen)
        : options(chosen),
          setting(settingOf(chosen)),
          lanes(laneLimits(chosen)),
          rows(chosenRows(chosen.filters, chosen.peers)),
          photograph(readPhoto(chosen.photo))
    {
        if (options.peers)
            peers = std::make_unique<PeerPrograms>();
    }

    /// Gives the exit status: 1 when a row could not be measured.
    int run()
    {
        if (options.growth)
            runGrowth();
        else
            runTable();
        if (options.json)
            std::printf("%s\n", document().dump(2).c_str());
        return failed ? 1 : 0;
    }

private:
    /// Memcpy, the plug-in with each limit of lanes, and all peers, in turn.
    void measureJob(const Row& row, const Job& job, Workshop& workshop, Result& result)
    {
        std::vector<PeerWay> ways;
        std::vector<std::string> failures;
        if (peers && !row.work.empty())
        {
            workshop.limitLanes(lanes.front());
            ways = peers->prepare(row.work, job, failures);
        }
        for (const std::string& failure : failures)
        {
            std::fprintf(stderr, "%s: %s\n", row.name.c_str(), failure.c_str());
            failed = true;
        }

        const auto copySize = static_cast<std::size_t>(job.bytes / 2);
        buffers.reserve(copySize);
        std::vector<Contestant> contestants;
        contestants.push_back({[this, copySize](int times) {
            return secondsOf([&] {
                       for (int time = 0; time < times; ++time)
                           buffers.copy(copySize);
                   }) /
                   times;
        }});
        for (const int limit : lanes)
            contestants.push_back({[&job, &workshop, limit](int times) {
                workshop.limitLanes(limit);
                return secondsOfRun(job, times);
            }});
        for (const PeerWay& way : ways)
            contestants.push_back({way.secondsOfRun, true});

        const std::vector<Timing> timings = measureInTurn(row.name, contestants, options.effort);
        result.memcpy = timings.front();
        auto timing = timings.begin() + 1;
        for (const int limit : lanes)
            result.plugIn.push_back({limit, *timing++});
        for (const PeerWay& way : ways)
            result.peers.push_back({way.name, way.difference, *timing++});
    }

    static double secondsOfRun(const Job& job, int times)
    {
        double seconds = 0;
        for (int time = 0; time < times; ++time)
        {
            seconds += secondsOf(job.run);
            if (job.reset)
                job.reset();
        }
        return seconds / times;
    }

    Result measureRow(const Row& row, Workshop& workshop)
    {
        Result result;
        result.width = workshop.width;
        result.height = workshop.height;
        try
        {
            Progress(row.name).show("preparing");
            const Job job = row.prepare(workshop);
            result.calls = workshop.takeNoted();
            result.items = job.items;
            result.bytes = job.bytes;
            measureJob(row, job, workshop, result);
        }
        catch (const std::exception& error)
        {
            result.failure = error.what();
            failed = true;
        }
        workshop.host.faults().clear();
        report.push_back(toJson(row, result));
        return result;
    }

    void runTable()
    {
        const Size size(options.megapixels);
        Workshop workshop(setting, photograph, size.width, size.height);
        Table table(options.markdown ? Table::Style::Markdown : Table::Style::Aligned, lanes, options.peers);
        if (options.markdown)
            std::printf("%s, %d x %d pixels.\n\n",
                        (describeRun(options.command) + ", artefact " + options.artefact).c_str(), size.width,
                        size.height);
        if (!options.json)
            table.printHead();
        for (const Row& row : rows)
        {
            const Result result = measureRow(row, workshop);
            if (!options.json)
                table.printRow(row, result);
        }
        if (!options.json)
            table.printLegend();
        if (!options.filters.empty() || options.peers)
            return;
        for (const std::string& method : methodsWithoutRow(workshop))
        {
            std::fprintf(stderr, "no row measures %s\n", method.c_str());
            failed = true;
        }
    }

    /// Size by size, since the memory of all sizes together would not fit into 32 bits; the table follows at
    /// the end.
    void runGrowth()
    {
        const std::vector<double> sizes = {0.25, 1, 4, 12, 48};
        std::vector<std::vector<Result>> results(rows.size());
        for (const double megapixels : sizes)
        {
            const Size size(megapixels);
            Workshop workshop(setting, photograph, size.width, size.height);
            for (std::size_t index = 0; index < rows.size(); ++index)
            {
                std::fprintf(stderr, "%d x %d: %s\n", size.width, size.height, rows[index].name.c_str());
                results[index].push_back(measureRow(rows[index], workshop));
            }
            buffers.free();
        }
        if (options.json)
            return;
        printGrowthHead(sizes);
        for (std::size_t index = 0; index < rows.size(); ++index)
            printGrowthRow(rows[index], results[index]);
        std::printf(
            "\nGrowth: how much longer a pixel takes in the largest picture than in the fastest size.\n");
    }

    nlohmann::json document() const
    {
        return {{"run", describeRun(options.command)},
                {"artefact", options.artefact},
                {"storage", options.storage},
                {"lanes", lanes},
                {"photoWidth", photograph.width},
                {"photoHeight", photograph.height},
                {"rows", report}};
    }

    const Options options;
    const Setting setting;
    const std::vector<int> lanes;
    const std::vector<Row> rows;
    const media::Image photograph;
    CopyBuffers buffers;
    std::unique_ptr<PeerPrograms> peers;
    nlohmann::json report = nlohmann::json::array();
    bool failed = false;
};

int benchMain(int argc, char** argv)
{
    Options options;
    CLI::App app(
        "Measures every method on a 12-megapixel photograph, in turn with a memcpy of as many bytes.");
    app.name("pictureqvr_bench");
    app.add_option("NAME", options.filters, "Only rows with one of these in their name");
    app.add_option("--artefact", options.artefact, "Which build to measure")
        ->check(CLI::IsMember(standin::allNames<standin::Artefact>()))
        ->capture_default_str();
    app.add_option("--storage", options.storage, "How the source pictures are kept")
        ->check(CLI::IsMember(standin::allNames<standin::Storage>()))
        ->capture_default_str();
    app.add_option("--result-storage", options.resultStorage,
                   "How the host makes new pictures; default: bitmap beside bitmap, else gworld32")
        ->check(CLI::IsMember(standin::allNames<standin::Storage>()));
    app.add_option("--lanes", options.lanes,
                   "Most pixels side by side; \"8,4\", the default, measures both in turn")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->check(CLI::IsMember({4, 8}));
    app.add_option("--rounds", options.effort.rounds, "Most rounds of each row")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    app.add_option("--seconds", options.effort.secondsPerRow,
                   "A row that would take longer gets fewer rounds")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--megapixels", options.megapixels, "Size of the pictures")
        ->check(CLI::Range(0.001, 100.0))
        ->capture_default_str();
    app.add_option("--photo", options.photo,
                   std::string("JPEG or PNG to measure with; default: ") + defaultPhoto)
        ->check(CLI::ExistingFile);
    auto* peers =
        app.add_flag("--peers", options.peers, "Measure other libraries too, in turn with the plug-in");
    auto* growth = app.add_flag("--growth", options.growth, "Measure at 0.25, 1, 4, 12 and 48 megapixels");
    auto* json = app.add_flag("--json", options.json, "Print JSON in place of the table");
    app.add_flag("--markdown", options.markdown, "Print the table as Markdown")
        ->excludes(json)
        ->excludes(growth);
    growth->excludes(peers);
    app.add_flag("--list", options.list, "Print the names of the rows");
    CLI11_PARSE(app, argc, argv);

    for (int index = 1; index < argc; ++index)
        options.command += std::string(" ") + argv[index];
    if (options.list)
    {
        for (const Row& row : chosenRows(options.filters, options.peers))
            std::printf("%s\n", row.name.c_str());
        return 0;
    }
    return Session(options).run();
}

/// Freed blocks stay with the process, so that the plug-in's own buffers lie in memory touched before, as its
/// pictures do.
void keepFreedMemory()
{
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
}

} // namespace

} // namespace bench

int main(int argc, char** argv)
{
    try
    {
        bench::keepFreedMemory();
        return bench::benchMain(argc, argv);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "pictureqvr_bench: %s\n", error.what());
        return 2;
    }
}
