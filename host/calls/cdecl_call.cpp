#include "host/calls/cdecl_call.h"

// standinCall(function, words, count, skew): copies the words below a stack pointer that is aligned but for
// the skew, and calls. Result registers are left alone, so that the same code serves functions with either
// kind of result.
asm(R"(
    .text
    .local standinCall
    .type standinCall, @function
standinCall:
    pushl %ebp
    movl %esp, %ebp
    pushl %esi
    pushl %edi
    movl 16(%ebp), %ecx
    leal (,%ecx,4), %eax
    subl %eax, %esp
    andl $-16, %esp
    subl 20(%ebp), %esp
    movl 12(%ebp), %esi
    movl %esp, %edi
    cld
    rep movsl
    call *8(%ebp)
    leal -8(%ebp), %esp
    popl %edi
    popl %esi
    popl %ebp
    ret
    .size standinCall, .-standinCall
)");

extern "C" std::uint32_t standinCall(REALanyFunction function, const std::uint32_t* words,
                                     std::uint32_t count, int skew);

namespace standin
{

std::uint32_t callForWord(REALanyFunction function, const Slots& slots, int skew)
{
    return standinCall(function, slots.data(), slots.count(), skew);
}

double callForDouble(REALanyFunction function, const Slots& slots, int skew)
{
    using DoubleCall = double (*)(REALanyFunction, const std::uint32_t*, std::uint32_t, int);
    return reinterpret_cast<DoubleCall>(&standinCall)(function, slots.data(), slots.count(), skew);
}

} // namespace standin
