/// \file
/// Calls everything that the plug-in has registered, millions of times in one process, and tells whether
/// memory grows.
#include "tests/support/every_call.h"
#include "tests/support/pictures.h"

#include "host/error.h"

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using standin::Storage;
using standin::Type;
using standin::Value;

/// A part of all calls, after which everything has been called, and memory has the size that it needs.
constexpr std::int64_t warmUpShare = 10;

/// How much more memory at the end is no growth: pictures and tables of the last calls are of other sizes.
constexpr std::int64_t allowedGrowth = 1024; // KiB

std::int64_t residentKib()
{
    std::int64_t total = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

/// A host, and small pictures of all storages and many sizes that its calls are given.
class Customer
{
public:
    Customer(const HostSetup& setup, std::uint32_t seed)
        : host(std::make_unique<standin::Host>(setup.options)),
          name(setup.name),
          random(seed),
          calls(everyCall(host->registered()))
    {
        constexpr int pictureCount = 24;
        for (int i = 0; i < pictureCount; ++i)
            pictures.push_back(newPicture());
    }

    /// Does any of the calls; with `faults`, any of the calls that it makes may fail.
    void call(bool faults)
    {
        constexpr int changesAfter = 16;
        constexpr int failsAfter = 20;
        constexpr int mostCalls = 30;

        if (random.onceIn(changesAfter))
            pictures[static_cast<std::size_t>(random.between(0, static_cast<int>(pictures.size()) - 1))] =
                newPicture();
        const RegisteredCall& chosen = random.oneOf(calls);
        const PreparedCall prepared =
            chosen.prepare(*host, [this](standin::Host&, const std::string& parameter, Type type, int) {
                // The sepia filter gives up no old result; a script has to.
                if (parameter == "DestinationPicture")
                    return Value(nullptr);
                // The stand-in draws every dot of the pen's path.
                if (parameter == "outlinewidth")
                    return Value(random.between(-2, 9));
                return argument(type);
            });
        // Scrolling gives a region that could not be made to QuickDraw all the same, which the ledger minds.
        if (faults && random.onceIn(failsAfter) && !chosen.text.starts_with("Scroll"))
            host->faults().failAnyCall(random.between(1, mostCalls));
        prepared.run();
        host->faults().clear();
    }

    /// What the plug-in holds, or has done wrong; empty when there is nothing.
    std::string complaint() const
    {
        const standin::Ledger ledger = host->ledger();
        return ledger.balanced() ? "" : name + ": " + ledger.describe();
    }

private:
    standin::Picture newPicture()
    {
        const Storage storage =
            standin::all<Storage>[random.between(0, static_cast<int>(std::size(standin::all<Storage>)) - 1)];
        return upload(*host, randomPictureOfAnyPalette(random, random.between(1, 40), random.between(1, 9)),
                      storage);
    }

    Value argument(Type type)
    {
        constexpr int nilAfter = 40;
        constexpr int side = 40;

        switch (type)
        {
        case Type::Boolean:
            return random.onceIn(2);
        case Type::Integer:
            return random.coordinate(side);
        case Type::UInt32:
            return static_cast<std::uint32_t>(random.between(0, 20));
        case Type::Colour:
            return static_cast<std::uint32_t>(random.between(0, 0xFFFFFF));
        case Type::Double:
            return random.parameter();
        case Type::Picture:
            return random.onceIn(nilAfter) ? standin::Picture() : random.oneOf(pictures);
        case Type::String:
            return binaryString();
        case Type::MemoryBlock:
            return random.onceIn(nilAfter)
                       ? standin::MemoryBlock()
                       : host->newMemoryBlock(random.onceIn(2) ? 1024 : random.between(0, 900));
        case Type::Nothing:
            break;
        }
        return nullptr;
    }

    /// What the plug-in makes of a picture, with a wrong byte now and then.
    Value binaryString()
    {
        const standin::String written =
            host->callGlobal("PicturetoBinaryStringQVR", {random.oneOf(pictures)}).string();
        std::string bytes = written.isNil() ? std::string(50, 'P') : written.bytes();
        if (random.onceIn(4))
            bytes[static_cast<std::size_t>(random.between(0, 23))] = static_cast<char>(random.byte());
        return host->newString(bytes, standin::encodingNone);
    }

    std::unique_ptr<standin::Host> host;
    std::string name;
    Random random;
    std::vector<RegisteredCall> calls;
    std::vector<standin::Picture> pictures;
};

/// Both artefacts in hosts of all kinds, before and after the two versions at which calls change.
std::vector<Customer> everyCustomer()
{
    std::vector<Customer> customers;
    for (const standin::Artefact artefact : {standin::Artefact::MacBundle, standin::Artefact::SharedObject})
        for (const standin::Kind kind : standin::all<standin::Kind>)
            for (const double version : {2011.0, 2012.5, 2013.03})
            {
                HostSetup setup = hostSetup(artefact, kind).version(version);
                setup.options.memory = standin::Memory::Plain;
                customers.emplace_back(setup, static_cast<std::uint32_t>(customers.size() + 1));
            }
    return customers;
}

class Soak
{
public:
    explicit Soak(std::int64_t callCount) : total(callCount), customers(everyCustomer())
    {
    }

    /// Gives 0 when nothing has grown, 1 otherwise.
    int run()
    {
        constexpr std::int64_t checkedAfter = 50000;
        const std::int64_t warmUp = total / warmUpShare;
        const auto start = std::chrono::steady_clock::now();
        for (std::int64_t done = 0; done < total; ++done)
        {
            if (done == warmUp)
                warmKib = residentKib();
            customers[static_cast<std::size_t>(done) % customers.size()].call(done >= warmUp);
            if (done % checkedAfter == 0 && !check(done))
                return 1;
        }
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        if (!check(total))
            return 1;
        const std::int64_t growth = residentKib() - warmKib;
        std::printf("%s%lld calls in %.0f s, %.0f calls/s\n", isatty(STDERR_FILENO) != 0 ? "\n" : "",
                    static_cast<long long>(total), seconds.count(),
                    static_cast<double>(total) / seconds.count());
        std::printf("resident after the first %lld calls: %lld KiB; at the end: %+lld KiB\n",
                    static_cast<long long>(warmUp), static_cast<long long>(warmKib),
                    static_cast<long long>(growth));
        std::printf("host objects, locks, heap blocks and strings held by the plug-in: 0\n");
        if (growth <= allowedGrowth)
            return 0;
        std::printf("Memory has grown by more than %lld KiB.\n", static_cast<long long>(allowedGrowth));
        return 1;
    }

private:
    bool check(std::int64_t done) const
    {
        if (isatty(STDERR_FILENO) != 0)
            std::fprintf(stderr, "\r%3lld %%, %lld KiB ", static_cast<long long>(100 * done / total),
                         static_cast<long long>(residentKib()));
        for (const Customer& customer : customers)
            if (const std::string complaint = customer.complaint(); !complaint.empty())
            {
                std::printf("after %lld calls: %s\n", static_cast<long long>(done), complaint.c_str());
                return false;
            }
        return true;
    }

    std::int64_t total;
    std::vector<Customer> customers;
    std::int64_t warmKib = 0;
};

int complain(const std::string& what)
{
    std::fprintf(stderr, "pictureqvr_soak: %s\n", what.c_str());
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    std::int64_t calls = 10000000;
    CLI::App app("Calls everything, again and again, and exits with 1 when memory or host objects grow.");
    app.name("pictureqvr_soak");
    // Fewer do not fill what the host keeps for messages and for the next objects.
    app.add_option("CALLS", calls, "How many calls")
        ->check(CLI::Range(std::int64_t{20000}, std::int64_t{1000000000000}))
        ->capture_default_str();
    try
    {
        app.parse(argc, argv);
        return Soak(calls).run();
    }
    catch (const CLI::CallForHelp& help)
    {
        return app.exit(help);
    }
    catch (const std::exception& error)
    {
        return complain(error.what());
    }
}
