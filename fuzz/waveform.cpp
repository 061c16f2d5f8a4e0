// Waveforms of any bytes with any arguments, compared with the reference.
#include "tests/reference/waveform.h"

#include "fuzz/expect.h"
#include "fuzz/fuzz_host.h"

#include <cstdio>

namespace
{

using fuzz::Input;

/// Widths from here on are refused; those below it and above the largest side of a picture only take long.
constexpr int surelyTooWide = 1 << 28;
constexpr int largestTriedSide = 40000;
constexpr int largestUsualWidth = 500;
constexpr int mostPixels = 1 << 15;
constexpr int largestTriedPen = 16;

reference::WaveformSettings settingsFrom(Input& input)
{
    constexpr int formats[] = {8, 7, 15, 16};
    constexpr std::uint8_t rarely = 31;
    reference::WaveformSettings settings;
    settings.bits = input.byte() % (rarely + 1) == rarely ? input.coordinate(8) : input.oneOf(formats);
    settings.outlineWidth = input.coordinate(1);
    settings.smooth = input.coordinate(0);
    settings.autoScale = input.flag();
    settings.backColour = input.bits<std::uint32_t>();
    settings.foreColour = input.bits<std::uint32_t>();
    settings.outlineColour = input.bits<std::uint32_t>();
    settings.width = input.coordinate(300);
    settings.height = input.coordinate(64);
    settings.sampleCount = input.coordinate(64);
    return settings;
}

/// Keeps to what can be tried many times a second: where width or height is not given, samples or 500 take
/// its place.
void limit(reference::WaveformSettings& settings, int samples)
{
    constexpr int defaultHeight = 500;
    constexpr int longestSide = 32767;
    // Around the longest side of a picture it is decided whether there is one.
    const bool telling =
        settings.width >= longestSide - 1 && settings.width <= longestSide + 1 && settings.outlineWidth <= 1;
    if (settings.width > largestUsualWidth && settings.width < surelyTooWide && !telling)
        settings.width %= largestUsualWidth;
    int columns = settings.width >= 1 ? settings.width : std::max(samples, settings.sampleCount);
    if (settings.height < 1 && columns > mostPixels / defaultHeight && columns < surelyTooWide)
        columns = settings.width = columns % (mostPixels / defaultHeight) + 1;
    if (settings.height >= 1 && settings.height <= largestTriedSide && columns <= largestTriedSide)
        settings.height = std::min(settings.height, std::max(mostPixels / std::max(columns, 1), 1));
}

standin::Value render(standin::Host& host, const standin::MemoryBlock& block,
                      const reference::WaveformSettings& settings)
{
    return host.callGlobal("RenderSamplesQVR",
                           {block, settings.sampleCount, settings.smooth, settings.width, settings.height,
                            settings.outlineWidth, settings.backColour, settings.foreColour,
                            settings.outlineColour, settings.bits, settings.autoScale});
}

/// The lines that the host was asked to draw.
std::vector<reference::HostLine> drawnLines(const standin::Host& host)
{
    std::vector<reference::HostLine> lines;
    for (const std::string& call : host.callLog())
    {
        reference::HostLine line;
        if (std::sscanf(call.c_str(), "RuntimeGraphicsDrawLine(%*[^,], %d, %d, %d, %d)", &line.x1, &line.y1,
                        &line.x2, &line.y2) == 4)
            lines.push_back(line);
    }
    return lines;
}

bool same(const reference::HostLine& a, const reference::HostLine& b)
{
    return a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    reference::WaveformSettings settings = settingsFrom(input);
    fuzz::FuzzHost host(input,
                        [&](standin::Options& options) { options.logCalls = settings.outlineWidth > 1; });
    const std::span<const std::uint8_t> samples = input.remainder();
    limit(settings, static_cast<int>(samples.size()));

    const std::optional<reference::Waveform> wanted = reference::renderWaveform(samples, settings);
    const standin::MemoryBlock block = host.newMemoryBlock(samples);
    // The host draws with pens of any size, pixel by pixel.
    if (settings.outlineWidth > largestTriedPen)
        host.faults().failAlways("REALSetPropValueInt");
    const standin::Value result = render(host, block, settings);
    fuzz::expectBalanced(host, "after the call");
    fuzz::expect(!result.exception().has_value(),
                 "the call raised " + result.exception().value_or(standin::RaisedException()).className);
    fuzz::expect(std::equal(samples.begin(), samples.end(), block.data()), "the samples were changed");
    const standin::Picture picture = result.picture();
    if (!host.isUsual())
        return 0;
    fuzz::expect(picture.isNil() == !wanted.has_value(), wanted ? "wanted a picture, got nil" : "wanted nil");
    if (!wanted)
        return 0;
    const std::vector<reference::HostLine> lines = drawnLines(host);
    fuzz::expect(std::equal(lines.begin(), lines.end(), wanted->lines.begin(), wanted->lines.end(), same),
                 "the host was to draw other lines");
    if (settings.outlineWidth <= 1)
        fuzz::expectPicture(wanted->picture, picture, "the waveform");
    return 0;
}
