#include "fuzz/expect.h"

namespace fuzz
{

namespace
{

using standin::sizeText;

std::string textOf(reference::Pixel pixel)
{
    return "(" + std::to_string(pixel.red) + ", " + std::to_string(pixel.green) + ", " +
           std::to_string(pixel.blue) + "; " + std::to_string(pixel.alpha) + ")";
}

} // namespace

void expectBalanced(const standin::Host& host, const std::string& when)
{
    const standin::Ledger ledger = host.ledger();
    if (!ledger.balanced())
        fail(when + ": " + ledger.describe());
}

void expectPicture(const reference::Picture& wanted, const standin::Picture& got, const std::string& what,
                   bool alpha)
{
    if (got.isNil())
        fail(what + ": wanted a picture, got nil");
    if (got.width() != wanted.width || got.height() != wanted.height)
        fail(what + ": wanted a picture of " + sizeText(wanted.width, wanted.height) + ", got one of " +
             sizeText(got.width(), got.height()));
    const standin::StorageTraits traits = traitsOf(got.storage());
    const reference::Picture pixels = reference::download(got);
    for (std::size_t index = 0; index < pixels.pixels.size(); ++index)
    {
        reference::Pixel want = wanted.pixels[index];
        if (!alpha || !traits.hasSpareByte)
            want.alpha = pixels.pixels[index].alpha;
        else
            want.alpha = reference::storedAlpha(want.alpha, traits);
        if (want != pixels.pixels[index])
            fail(what + ": pixel " + std::to_string(index) + " of " + sizeText(wanted.width, wanted.height) +
                 " in " + std::string(traits.name) + " is " + textOf(pixels.pixels[index]) + ", not " +
                 textOf(want));
    }
}

} // namespace fuzz
