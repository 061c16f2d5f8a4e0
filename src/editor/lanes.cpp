#include "editor/lanes.h"

#include <cpuid.h>

// External and volatile in effect: it is only ever changed from outside, by its name in the symbol table.
__attribute__((used)) int32_t qvrLaneLimit = 8;

namespace qvr::lanes
{

namespace
{

/// AVX2 needs the processor's instructions and a system that saves the wide registers.
bool processorHasAvx2()
{
    constexpr uint32_t wideRegistersSaved = 0x6;

    uint32_t eax = 0;
    uint32_t ebx = 0;
    uint32_t ecx = 0;
    uint32_t edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & bit_OSXSAVE) == 0 || (ecx & bit_AVX) == 0)
        return false;
    uint32_t enabled = 0;
    uint32_t enabledHigh = 0;
    asm volatile("xgetbv" : "=a"(enabled), "=d"(enabledHigh) : "c"(0));
    if ((enabled & wideRegistersSaved) != wideRegistersSaved)
        return false;
    return __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0 && (ebx & bit_AVX2) != 0;
}

} // namespace

} // namespace qvr::lanes

namespace qvr
{

bool wideLanesAvailable()
{
    enum class Answer : uint8_t
    {
        Unknown,
        No,
        Yes
    };
    static Answer answer = Answer::Unknown;
    if (answer == Answer::Unknown)
        answer = lanes::processorHasAvx2() ? Answer::Yes : Answer::No;
    const volatile int32_t& limit = qvrLaneLimit;
    return answer == Answer::Yes && limit >= WideLanes::count;
}

} // namespace qvr
