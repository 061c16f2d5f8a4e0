#pragma once

#include <chrono>

namespace standin
{

/// How long calls of the plug-in have taken.
struct CallTimes
{
    std::chrono::steady_clock::duration plugin{}; ///< its own work
    std::chrono::steady_clock::duration host{};   ///< the host's functions that it called, such as newPicture
};

/// Times all calls that are made while it lives, but for those while a younger one does.
class CallTimer
{
public:
    CallTimer();
    ~CallTimer();
    CallTimer(const CallTimer&) = delete;
    CallTimer& operator=(const CallTimer&) = delete;

    const CallTimes& times() const
    {
        return taken;
    }

    /// Who is at work.
    enum class Side
    {
        Caller,
        Plugin,
        Host ///< while the plug-in waits
    };

    /// The host's own: says who is at work as long as it lives.
    class Turn
    {
    public:
        explicit Turn(Side side) : timer(active), before(timer == nullptr ? side : timer->turnTo(side))
        {
        }
        ~Turn()
        {
            if (timer != nullptr)
                timer->turnTo(before);
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        CallTimer* timer;
        Side before;
    };

private:
    /// Gives who was at work before.
    Side turnTo(Side side);

    static CallTimer* active;

    CallTimer* previous;
    Side current = Side::Caller;
    std::chrono::steady_clock::time_point since;
    CallTimes taken;
};

} // namespace standin
