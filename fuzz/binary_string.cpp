// Strings from anywhere into "BinaryStringtoPictureQVR", and the picture back through
// "PicturetoBinaryStringQVR".
#include "tests/reference/binary_string.h"

#include "fuzz/expect.h"
#include "fuzz/fuzz_host.h"

namespace
{

using fuzz::Input;

/// The header says how long a string is, which is hard to guess; mostly it is made right.
std::string stringFrom(Input& input)
{
    constexpr std::size_t lengthAt = 4;
    constexpr std::uint8_t rarely = 15;
    const bool asItIs = input.byte() % (rarely + 1) == rarely;
    const std::span<const std::uint8_t> bytes = input.remainder();
    std::string text(bytes.begin(), bytes.end());
    if (!asItIs && text.size() >= lengthAt + 4)
        for (std::size_t index = 0; index < 4; ++index)
            text[lengthAt + index] = static_cast<char>(text.size() >> (8 * (3 - index)));
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    fuzz::FuzzHost host(input);
    const std::uint32_t encodings[] = {standin::encodingNone, standin::encodingUtf8, standin::encodingAscii,
                                       standin::encodingUtf16, input.byte()};
    const std::uint32_t encoding = input.oneOf(encodings);
    const std::string text = stringFrom(input);

    const std::optional<reference::Picture> wanted = reference::fromBinaryString(text);
    const standin::Value result =
        host.callGlobal("BinaryStringtoPictureQVR", {host.newString(text, encoding)});
    const standin::Picture picture = result.picture();
    fuzz::expectBalanced(host, "after reading");
    fuzz::expect(!result.exception().has_value(),
                 "reading raised " + result.exception().value_or(standin::RaisedException()).className);
    if (!host.isUsual())
        return 0;
    fuzz::expect(picture.isNil() == !wanted.has_value(),
                 wanted ? "reading gave nil" : "reading gave a picture for what is none");
    if (!wanted)
        return 0;
    fuzz::expectPicture(*wanted, picture, "reading");

    const standin::String written = host.callGlobal("PicturetoBinaryStringQVR", {picture}).string();
    fuzz::expectBalanced(host, "after writing");
    fuzz::expect(!written.isNil(), "writing gave nil");
    fuzz::expect(written.encoding() == standin::encodingNone, "what is written has an encoding");
    fuzz::expect(written.bytes() == reference::toBinaryString(*wanted), "writing gave another string");
    return 0;
}
