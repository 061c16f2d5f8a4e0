#include "host/call_timer.h"

#include <utility>

namespace standin
{

CallTimer* CallTimer::active = nullptr;

CallTimer::CallTimer() : previous(std::exchange(active, this))
{
}

CallTimer::~CallTimer()
{
    active = previous;
}

CallTimer::Side CallTimer::turnTo(Side side)
{
    const auto now = std::chrono::steady_clock::now();
    if (current == Side::Plugin)
        taken.plugin += now - since;
    if (current == Side::Host)
        taken.host += now - since;
    since = now;
    return std::exchange(current, side);
}

} // namespace standin
