#pragma once

#include <stdexcept>

namespace standin
{

/// What the stand-in host throws: one line that says what is wrong and, where it helps, what would be right.
class Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace standin
