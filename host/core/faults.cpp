#include "host/core/faults.h"

namespace standin
{

void Faults::failCall(const std::string& name, int n)
{
    plans[name].countdown = n;
}

void Faults::failAlways(const std::string& name)
{
    plans[name].always = true;
}

void Faults::failAnyCall(int n)
{
    anyCountdown = n;
}

void Faults::clear()
{
    *this = Faults();
}

int Faults::callCount(const std::string& name) const
{
    const auto found = callsByName.find(name);
    return found == callsByName.end() ? 0 : found->second;
}

bool Faults::strikes(const std::string& name, bool canFail)
{
    ++callsByName[name];
    bool strike = false;
    if (canFail)
    {
        ++calls;
        strike = anyCountdown > 0 && --anyCountdown == 0;
    }
    if (const auto plan = plans.find(name); plan != plans.end())
        strike |= plan->second.always || (plan->second.countdown > 0 && --plan->second.countdown == 0);
    failed += strike;
    return strike;
}

} // namespace standin
