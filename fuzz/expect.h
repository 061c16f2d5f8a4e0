#pragma once

#include "tests/reference/host_picture.h"

#include <string>

namespace fuzz
{

/// Is called when something does not hold. Each program has its own: fuzzers end the process, tests fail.
[[noreturn]] void fail(const std::string& what);
inline void expect(bool holds, const std::string& what)
{
    if (!holds)
        fail(what);
}

/// Nothing is outstanding, nothing is wrong.
void expectBalanced(const standin::Host& host, const std::string& when);
/// The same colours as `wanted`. Its alpha 255 stands for the spare byte that writers leave; other values are
/// wanted as they are. With `alpha` false no spare byte is looked at.
void expectPicture(const reference::Picture& wanted, const standin::Picture& got, const std::string& what,
                   bool alpha = true);

} // namespace fuzz
