#include "cli/trial.h"

#include "cli/fitting_arguments.h"
#include "host/calls/catalogue.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <regex>
#include <set>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace cli
{

namespace
{

using standin::Options;
using standin::Storage;

/// What the process that tries the plug-in tells the one that waits for it: a tag and texts, a line each.
enum Tag : char
{
    doing = '>',    ///< what comes next, where
    failed = '!',   ///< a fault of what is being done
    finished = '.', ///< one more call is done
    ended = '$'     ///< everything is done
};

std::string oneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, ' ');
    return text;
}

std::string hostName(const Options& options)
{
    std::ostringstream name;
    name.precision(std::numeric_limits<double>::digits10);
    name << nameOf(options.kind) << " " << options.version;
    return name.str();
}

/// Objects are counted, and the same fault would look like another on every storage.
std::string withoutNumbers(const std::string& text)
{
    static const std::regex number("#[0-9]+");
    return std::regex_replace(text, number, "");
}

/// What a call may change of what it is given: variables, the picture that is moved or gets a mask, and the
/// one that a result goes into.
bool mayChange(const std::string& call, const std::string& argument)
{
    const bool changesItsPicture = call.starts_with("Scroll") || call.ends_with(" assigned");
    return (argument == "self" && changesItsPicture) || argument == "dest" ||
           call.find("byref " + argument + " ") != std::string::npos;
}

/// "PictureSepiaQVR.Run as boolean".
bool isOfClass(const standin::RegisteredCall& call)
{
    return call.text.find('.') < call.text.find_first_of("( ");
}

/// The process that tries the plug-in on one host.
class Trial
{
public:
    Trial(const Options& hostOptions, const TrialPlan& trialPlan, int reportTo)
        : options(hostOptions),
          plan(trialPlan),
          report(reportTo)
    {
    }

    /// From one of the calls on.
    void run(int firstCall, const std::set<std::string>& unsafe)
    {
        const std::string place = hostName(options);
        tell(doing, "loading", place);
        guarded([&] {
            standin::Host host(options);
            if (firstCall == 0)
                checkRegistration(host, place);
            makeCalls(host, firstCall, unsafe);
            tell(doing, "unloading", place);
        });
        tell(ended);
    }

private:
    void tell(Tag tag, const std::string& text = "", const std::string& place = "")
    {
        const std::string line = std::string(1, tag) + oneLine(text) + "\t" + place + "\n";
        if (write(report, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
            _exit(EXIT_FAILURE);
        alarm(plan.patience);
    }

    template <class Job>
    void guarded(Job job)
    {
        try
        {
            job();
        }
        catch (const std::exception& error)
        {
            tell(failed, error.what());
        }
    }

    void checkRegistration(const standin::Host& host, const std::string& place)
    {
        tell(doing, "what is registered", place);
        for (const std::string& fault :
             standin::registrationFaults(host.registered(), options.version, plan.catalogue))
            tell(failed, fault);
        checkLedger(host);
    }

    bool checkLedger(const standin::Host& host)
    {
        const standin::Ledger ledger = host.ledger();
        for (const auto* texts : {&ledger.faults, &ledger.outstanding})
            for (const std::string& text : *texts)
                tell(failed, withoutNumbers(text));
        return ledger.balanced();
    }

    void makeCalls(standin::Host& host, int firstCall, const std::set<std::string>& unsafe)
    {
        int number = 0;
        for (const Storage storage : standin::all<Storage>)
        {
            const std::string place = hostName(options) + ", " + std::string(nameOf(storage));
            tell(doing, "preparing calls", place);
            FittingArguments arguments(host, storage);
            // Where new pictures are bitmaps no others can be read.
            const bool isReadable =
                storage == Storage::Bitmap || options.storageOfNewPictures() != Storage::Bitmap;
            for (const standin::RegisteredCall& call : standin::everyCall(host.registered()))
            {
                if (number++ < firstCall)
                    continue;
                if (!unsafe.contains(call.text))
                {
                    tell(doing, call.text, place);
                    guarded([&] { makeCall(host, call, arguments, isReadable); });
                    arguments.clear();
                    if (!checkLedger(host))
                        host.rewind();
                }
                tell(finished);
            }
        }
    }

    void makeCall(standin::Host& host, const standin::RegisteredCall& call, FittingArguments& arguments,
                  bool isReadable)
    {
        const standin::PreparedCall prepared = call.prepare(host, std::ref(arguments));
        const standin::Value result = prepared.run();
        if (const auto& raised = result.exception())
            tell(failed, "raised " + raised->className + ": " + raised->message);
        if (call.result == standin::Type::Picture && !isOfClass(call) && isReadable &&
            (result.isNil() || result.picture().isNil()))
            tell(failed, "gave nil");
        for (const std::string& name : arguments.changed())
            if (!mayChange(call.text, name))
                tell(failed, "changed " + name);
    }

    const Options& options;
    const TrialPlan& plan;
    int report;
};

/// Collects what processes tell.
class Collector
{
public:
    explicit Collector(const TrialPlan& trialPlan) : plan(trialPlan)
    {
    }

    void tryOn(const Options& options)
    {
        ++result.hosts;
        int firstCall = 0;
        bool complete = false;
        while (!complete)
        {
            const int callsBefore = result.calls;
            const int status = runProcess(options, firstCall);
            firstCall += result.calls - callsBefore;
            complete = hasEnded || !inCall;
            if (hasEnded)
                continue;
            addFinding(endingText(status));
            if (inCall)
            {
                unsafe.insert(subject);
                ++result.calls;
                ++firstCall;
            }
        }
    }

    TrialResult result;

private:
    std::string endingText(int status) const
    {
        if (!WIFSIGNALED(status))
            return "ended the process with exit code " + std::to_string(WEXITSTATUS(status));
        if (WTERMSIG(status) == SIGALRM)
            return "did not return within " + std::to_string(plan.patience) +
                   (plan.patience == 1 ? " second" : " seconds");
        return "ended by signal " + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) +
               ")";
    }

    /// Gives the status that the process has ended with.
    int runProcess(const Options& options, int firstCall)
    {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0)
            throw standin::Error("no pipe for another process");
        std::cout.flush();
        const pid_t child = fork();
        if (child < 0)
            throw standin::Error("no other process can be started");
        if (child == 0)
        {
            close(ends[0]);
            silence();
            Trial(options, plan, ends[1]).run(firstCall, unsafe);
            _exit(EXIT_SUCCESS);
        }
        close(ends[1]);
        read(ends[0]);
        close(ends[0]);
        int status = 0;
        waitpid(child, &status, 0);
        return status;
    }

    /// What the plug-in or its host's last words print would stand among the findings.
    static void silence()
    {
        const int nowhere = open("/dev/null", O_RDWR);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(nowhere, stream);
        for (const int signal : {SIGSEGV, SIGALRM, SIGPIPE})
            std::signal(signal, SIG_DFL);
    }

    void read(int from)
    {
        hasEnded = inCall = false;
        std::string line;
        std::array<char, 4096> buffer{};
        for (;;)
        {
            const ssize_t size = ::read(from, buffer.data(), buffer.size());
            if (size < 0 && errno == EINTR)
                continue;
            if (size <= 0)
                return;
            for (const char character : std::string_view(buffer.data(), static_cast<std::size_t>(size)))
                if (character != '\n')
                    line += character;
                else
                    take(std::exchange(line, ""));
        }
    }

    void take(const std::string& line)
    {
        const std::size_t tab = std::min(line.find('\t'), line.size());
        const std::string text =
            line.substr(std::min<std::size_t>(1, tab), tab - std::min<std::size_t>(1, tab));
        switch (line.empty() ? '\0' : line.front())
        {
        case doing:
            subject = text;
            place = line.substr(std::min(tab + 1, line.size()));
            // Calls are made on a storage.
            inCall = place.find(", ") != std::string::npos && subject != "preparing calls";
            break;
        case failed:
            addFinding(text);
            break;
        case finished:
            ++result.calls;
            break;
        case ended:
            hasEnded = true;
            break;
        default:
            break;
        }
    }

    void addFinding(const std::string& fault)
    {
        const auto known =
            std::find_if(result.findings.begin(), result.findings.end(),
                         [&](const Finding& one) { return one.subject == subject && one.fault == fault; });
        if (known == result.findings.end())
            result.findings.push_back({subject, fault, {place}});
        else if (known->places.back() != place)
            known->places.push_back(place);
    }

    const TrialPlan& plan;
    std::set<std::string> unsafe;
    std::string subject;
    std::string place;
    bool inCall = false;
    bool hasEnded = false;
};

} // namespace

TrialResult tryPlugin(const TrialPlan& plan, const TrialProgress& progress)
{
    Collector collector(plan);
    for (const Options& options : plan.hosts)
    {
        progress(static_cast<std::size_t>(collector.result.hosts));
        collector.tryOn(options);
    }
    return std::move(collector.result);
}

} // namespace cli
