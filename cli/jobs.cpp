#include "cli/jobs.h"

#include "cli/progress.h"
#include "host/error.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <new>
#include <optional>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace cli
{

namespace
{

using standin::Error;

/// Where a process prints to: a file in memory.
class Sheet
{
public:
    Sheet() : descriptor(memfd_create("printed", MFD_CLOEXEC))
    {
        if (descriptor < 0)
            throw Error(std::string("cannot keep what is printed: ") + std::strerror(errno));
    }
    ~Sheet()
    {
        close(descriptor);
    }
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;

    void receive(int stream) const
    {
        dup2(descriptor, stream);
    }

    std::string text() const
    {
        std::string result(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
        const ssize_t size = pread(descriptor, result.data(), result.size(), 0);
        result.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return result;
    }

private:
    const int descriptor;
};

/// The message, with the file that it is about in it.
std::string about(const std::string& name, const std::string& message)
{
    const bool isNamed = message.find(name + ":") != std::string::npos;
    return "pictureqvr: " + (isNamed ? message : name + ": " + message) + "\n";
}

/// What a job has come to.
struct Outcome
{
    bool failed = false;
    std::string output;
    std::string errors;
};

class Running
{
public:
    explicit Running(const Job& startedJob) : job(startedJob)
    {
        std::cout.flush();
        process = fork();
        if (process < 0)
            throw Error(std::string("cannot start a process: ") + std::strerror(errno));
        if (process == 0)
            run();
    }

    Outcome outcome(int status) const
    {
        Outcome result{status != 0, output.text(), errors.text()};
        if (WIFSIGNALED(status))
            result.errors += about(job.name, std::string("stopped: ") + strsignal(WTERMSIG(status)));
        return result;
    }

    pid_t process;

private:
    /// Nothing that the parent has begun is ended here.
    [[noreturn]] void run() const
    {
        output.receive(STDOUT_FILENO);
        errors.receive(STDERR_FILENO);
        int code = EXIT_SUCCESS;
        try
        {
            job.work();
        }
        catch (const std::bad_alloc&)
        {
            std::cerr << about(job.name, "there is not enough memory");
            code = EXIT_FAILURE;
        }
        catch (const std::exception& error)
        {
            std::cerr << about(job.name, error.what());
            code = EXIT_FAILURE;
        }
        std::cout.flush();
        std::cerr.flush();
        _exit(code);
    }

    const Job& job;
    Sheet output;
    Sheet errors;
};

/// The end of any process, which can be waited for while this lives.
class Ends
{
public:
    Ends()
    {
        sigemptyset(&ends);
        sigaddset(&ends, SIGCHLD);
        sigprocmask(SIG_BLOCK, &ends, &before);
    }
    ~Ends()
    {
        sigprocmask(SIG_SETMASK, &before, nullptr);
    }
    Ends(const Ends&) = delete;
    Ends& operator=(const Ends&) = delete;

    /// Waits a moment at most.
    void wait() const
    {
        constexpr timespec moment{0, 200'000'000};
        sigtimedwait(&ends, nullptr, &moment);
    }

private:
    sigset_t ends{};
    sigset_t before{};
};

class Jobs
{
public:
    Jobs(const std::vector<Job>& allJobs, unsigned atATime, bool quiet)
        : jobs(allJobs),
          most(atATime != 0 ? atATime : std::max(1U, std::thread::hardware_concurrency())),
          outcomes(jobs.size()),
          bar(jobs.size(), quiet)
    {
    }

    void run()
    {
        const Ends ends;
        for (std::size_t next = 0; next < jobs.size() || !running.empty();)
        {
            bar.show(done);
            for (; next < jobs.size() && running.size() < most; ++next)
                running.try_emplace(next, jobs[next]);
            ends.wait();
            collect();
        }
        bar.hide();
        if (failures != 0)
            throw Error(std::to_string(failures) + " of " + std::to_string(jobs.size()) + " files failed");
    }

private:
    void collect()
    {
        for (auto entry = running.begin(); entry != running.end();)
        {
            int status = 0;
            if (waitpid(entry->second.process, &status, WNOHANG) == 0)
            {
                ++entry;
                continue;
            }
            outcomes[entry->first] = entry->second.outcome(status);
            entry = running.erase(entry);
            ++done;
        }
        for (; told < jobs.size() && outcomes[told]; ++told)
            tell(*outcomes[told]);
    }

    void tell(const Outcome& outcome)
    {
        failures += outcome.failed ? 1 : 0;
        if (outcome.output.empty() && outcome.errors.empty())
            return;
        bar.hide();
        std::cout << outcome.output << std::flush;
        std::cerr << outcome.errors;
    }

    const std::vector<Job>& jobs;
    const std::size_t most;
    std::map<std::size_t, Running> running; ///< by the number of the job
    std::vector<std::optional<Outcome>> outcomes;
    ProgressBar bar;
    std::size_t done = 0;
    std::size_t told = 0;
    std::size_t failures = 0;
};

} // namespace

void runJobs(const std::vector<Job>& jobs, unsigned atATime, bool quiet)
{
    Jobs(jobs, atATime, quiet).run();
}

} // namespace cli
