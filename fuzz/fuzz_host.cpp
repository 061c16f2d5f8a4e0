#include "fuzz/fuzz_host.h"

#include "fuzz/truth.h"
#include "tests/reference/picture.h"

#include "build_info.h"

namespace fuzz
{

namespace
{

using standin::Kind;
using standin::Storage;

standin::Options optionsFrom(Input& input)
{
    // Both sides of every threshold.
    constexpr double versions[] = {2013.03, 2019.1, 2013.02, 2013.0,  2012.99,  2012.5,
                                   2012.0,  2011.9, 2011.0,  2010.03, 2010.029, 2010.0};
    constexpr int paddings[] = {12, 0, 1, 3, 4, 7};
    constexpr std::uint8_t rarely = 31;

    standin::Options options;
    options.plugin = build::sharedObject;
    options.reuse = true;
    options.logCalls = false;
    options.freshFill = reference::untouchedByte;
    options.kind = input.oneOf(standin::all<Kind>);
    options.version = input.oneOf(versions);
    options.padding = input.oneOf(paddings);
    options.stackSkew = 4 * static_cast<int>(input.below(4));
    const std::uint8_t storage = input.byte();
    const bool bitmaps = options.kind == Kind::Console || options.kind == Kind::Web;
    if (storage % (rarely + 1) == rarely)
        options.newPictureStorage = input.oneOf(standin::all<Storage>);
    else if (!bitmaps)
        options.newPictureStorage = storage % 2 == 0 ? Storage::GWorld32 : Storage::GWorld24;
    return options;
}

standin::Options changed(standin::Options options, const std::function<void(standin::Options&)>& change)
{
    change(options);
    return options;
}

} // namespace

FuzzHost::FuzzHost(Input& input) : FuzzHost(input, [](standin::Options&) {})
{
}

FuzzHost::FuzzHost(Input& input, const std::function<void(standin::Options&)>& change)
    : Host(changed(optionsFrom(input), change))
{
    constexpr int narrow = 4;
    const std::uint8_t loops = input.byte();
    if ((loops & 1) != 0)
        *pluginVariable("qvrLaneLimit") = narrow;
    if ((loops & 2) != 0)
        *pluginVariable("qvrSmallestStreamed") = 0;
}

bool FuzzHost::isUsual() const
{
    return locks(*this, newStorage());
}

} // namespace fuzz
