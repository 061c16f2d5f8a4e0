#include "host/calls/cdecl_call.h"

// standinCall(function, words, count): copies the words below an aligned stack pointer and calls. Result
// registers are left alone, so that the same code serves functions with either kind of result.
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
                                     std::uint32_t count);

namespace standin
{

std::uint32_t callForWord(REALanyFunction function, const Slots& slots)
{
    return standinCall(function, slots.data(), slots.count());
}

double callForDouble(REALanyFunction function, const Slots& slots)
{
    using DoubleCall = double (*)(REALanyFunction, const std::uint32_t*, std::uint32_t);
    return reinterpret_cast<DoubleCall>(&standinCall)(function, slots.data(), slots.count());
}

} // namespace standin
