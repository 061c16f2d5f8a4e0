#pragma once

#include "abi/host_abi.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace standin
{

/// The 4-byte argument slots of a cdecl call, first argument first.
class Slots
{
public:
    void push(std::uint32_t value)
    {
        words.push_back(value);
    }
    void push(std::int32_t value)
    {
        words.push_back(static_cast<std::uint32_t>(value));
    }
    void push(const void* value)
    {
        words.push_back(reinterpret_cast<std::uintptr_t>(value));
    }
    void push(double value)
    {
        std::uint32_t halves[2];
        std::memcpy(halves, &value, sizeof value);
        words.insert(words.end(), halves, halves + 2);
    }
    /// A boolean is one byte; the callee must not look at the rest of its slot.
    void push(bool value)
    {
        words.push_back(0xA5A5A500U | static_cast<std::uint32_t>(value));
    }

    const std::uint32_t* data() const
    {
        return words.data();
    }
    std::uint32_t count() const
    {
        return static_cast<std::uint32_t>(words.size());
    }

private:
    std::vector<std::uint32_t> words;
};

/// Calls a function by the 32-bit cdecl convention with a stack that lies `skew` bytes below an alignment to
/// 16; gives what is in EAX.
std::uint32_t callForWord(REALanyFunction function, const Slots& slots, int skew);
/// The same for a function whose result is in ST0.
double callForDouble(REALanyFunction function, const Slots& slots, int skew);

} // namespace standin
