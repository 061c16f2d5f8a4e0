#include "fuzz/expect.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz
{

/// The fuzzer keeps the input.
void fail(const std::string& what)
{
    std::fprintf(stderr, "==FINDING== %s\n", what.c_str());
    std::abort();
}

} // namespace fuzz
