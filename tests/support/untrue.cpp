#include "fuzz/expect.h"

#include <stdexcept>

/// In tests what does not hold ends the test, which catches it.
void fuzz::fail(const std::string& what)
{
    throw std::logic_error(what);
}
