#include "tests/support/artefact_watch.h"

#include "tests/support/artefact_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <ucontext.h>

namespace
{

constexpr std::uint8_t breakpoint = 0xCC; // int3

struct Place
{
    std::uint8_t* code;
    std::uint8_t original;
    bool reached;
};

// What the signal handler sees. It allocates nothing, so these change only while no breakpoint is set.
std::vector<Place> places;
struct sigaction previousAction;

/// Notes that a place was reached, takes its breakpoint away, and lets the program go on there.
void onBreakpoint(int, siginfo_t*, void* context)
{
    greg_t& next = static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EIP];
    for (Place& place : places)
        if (reinterpret_cast<greg_t>(place.code) == next - 1)
        {
            place.reached = true;
            *place.code = place.original;
            --next;
            return;
        }
    std::abort();
}

/// Makes the page of a byte writable, which code usually is not.
void makeWritable(std::uint8_t* code)
{
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t page = reinterpret_cast<std::uintptr_t>(code) / pageSize * pageSize;
    if (mprotect(reinterpret_cast<void*>(page), pageSize, PROT_READ | PROT_WRITE | PROT_EXEC) != 0)
        throw std::runtime_error("the plug-in's code cannot be made writable");
}

} // namespace

Watch::Watch(TestHost& host, const std::vector<std::uint32_t>& addresses)
{
    const char* const known = "qvrLaneLimit";
    distance = reinterpret_cast<std::uintptr_t>(host.pluginVariable(known)) -
               addressOf(host.setup().options.artefact, known);
    if (!places.empty())
        throw std::logic_error("there is another watch");
    for (const std::uint32_t address : addresses)
    {
        auto* code = reinterpret_cast<std::uint8_t*>(address + distance);
        makeWritable(code);
        places.push_back({code, *code, false});
    }
    struct sigaction action
    {
    };
    action.sa_sigaction = onBreakpoint;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGTRAP, &action, &previousAction);
}

Watch::~Watch()
{
    disarm();
    places.clear();
    sigaction(SIGTRAP, &previousAction, nullptr);
}

void Watch::arm()
{
    for (Place& place : places)
    {
        place.reached = false;
        *place.code = breakpoint;
    }
}

std::set<std::uint32_t> Watch::disarm()
{
    std::set<std::uint32_t> reached;
    for (const Place& place : places)
    {
        *place.code = place.original;
        if (place.reached)
            reached.insert(reinterpret_cast<std::uintptr_t>(place.code) - distance);
    }
    return reached;
}
