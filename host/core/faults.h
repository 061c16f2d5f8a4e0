#pragma once

#include <map>
#include <string>
#include <utility>

namespace standin
{

/// Lets chosen calls of the plug-in to its surroundings fail: host functions, system functions, QuickDraw
/// functions and its own "malloc" and "calloc". A call that fails does nothing and gives null, false or 0
/// (the system's error codes: non-zero).
class Faults
{
public:
    /// Lets the `n`-th call of `name` from now fail once; 1 is the very next one.
    void failCall(const std::string& name, int n = 1);
    /// Lets every call of `name` fail from now on, until `clear`.
    void failAlways(const std::string& name);
    /// Lets the `n`-th call that can fail (one that has a result), whatever its name, fail once; 1 is the
    /// next one.
    void failAnyCall(int n);
    /// Takes back all planned failures, and starts the counts again at 0.
    void clear();
    /// How many calls that can fail were made since the start or the last `clear`.
    int callCount() const
    {
        return calls;
    }
    /// How many calls of `name` were made since the start or the last `clear`.
    int callCount(const std::string& name) const;
    /// How many calls have failed because of the plans above, since the start or the last `clear`.
    int failures() const
    {
        return failed;
    }

    /// The call that failed last because of them, as in the call log: "malloc(12)",
    /// "CFBundleGetFunctionPointerForName(CFBundle#1, "LockPixels")". Empty when none has.
    const std::string& lastFailure() const
    {
        return lastFailed;
    }

    /// Counts a call, and tells whether it is to fail. For the host's own use.
    bool strikes(const std::string& name, bool canFail);
    /// Tells what the call was that has just been struck.
    void describeFailure(std::string call)
    {
        lastFailed = std::move(call);
    }

private:
    struct Plan
    {
        int countdown = 0;
        bool always = false;
    };

    std::map<std::string, Plan> plans;
    std::map<std::string, int> callsByName;
    int anyCountdown = 0;
    int calls = 0;
    int failed = 0;
    std::string lastFailed;
};

} // namespace standin
