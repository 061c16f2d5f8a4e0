/// \file
/// Measures how fast the plug-in's methods are, beside a memcpy of as many bytes and beside other libraries.
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
    int lanes = 0;
    Effort effort;
    double megapixels = 12;
    bool growth = false;
    bool json = false;
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
    if (options.lanes != 0)
        setting.lanes = options.lanes;
    return setting;
}

bool contains(const std::string& text, const std::string& part)
{
    const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

std::vector<Row> chosenRows(const std::vector<std::string>& filters)
{
    std::vector<Row> rows = allRows();
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
          rows(chosenRows(chosen.filters)),
          photograph(readPhoto(chosen.photo))
    {
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
    Result measureRow(const Row& row, Workshop& workshop)
    {
        Result result;
        result.width = workshop.width;
        result.height = workshop.height;
        try
        {
            const Job job = row.prepare(workshop);
            result.items = job.items;
            result.bytes = job.bytes;
            result.measurement = measure(row.name, job, options.effort, buffers);
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
        if (!options.json)
            printHead();
        for (const Row& row : rows)
        {
            const Result result = measureRow(row, workshop);
            if (!options.json)
                printRow(row, result, options.effort.rounds);
        }
        if (!options.json)
            printLegend(buffers);
        if (!options.filters.empty())
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
        return {{"artefact", options.artefact},     {"storage", options.storage},
                {"lanes", options.lanes},           {"photoWidth", photograph.width},
                {"photoHeight", photograph.height}, {"rows", report}};
    }

    const Options options;
    const Setting setting;
    const std::vector<Row> rows;
    const media::Image photograph;
    CopyBuffers buffers;
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
    app.add_option("--lanes", options.lanes, "Most pixels side by side; default: what the processor offers")
        ->check(CLI::IsMember({4, 8}));
    app.add_option("--rounds", options.effort.rounds, "Rounds of each row")
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
    app.add_flag("--growth", options.growth, "Measure at 0.25, 1, 4, 12 and 48 megapixels");
    app.add_flag("--json", options.json, "Print JSON in place of the table");
    app.add_flag("--list", options.list, "Print the names of the rows");
    CLI11_PARSE(app, argc, argv);

    if (options.list)
    {
        for (const Row& row : chosenRows(options.filters))
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
