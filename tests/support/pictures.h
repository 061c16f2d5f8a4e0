/// \file
/// Test pictures: made at random, moved between the host and the references, compared and kept when they
/// differ.
#pragma once

#include "tests/reference/host_picture.h"
#include "tests/support/test_host.h"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

/// The ends of the language's integers.
inline constexpr int least = std::numeric_limits<int>::min();
inline constexpr int most = std::numeric_limits<int>::max();

/// Repeatable random numbers.
class Random
{
public:
    explicit Random(std::uint32_t seed) : engine(seed)
    {
    }

    /// Both ends included.
    int between(int lowest, int highest);
    std::uint8_t byte()
    {
        return static_cast<std::uint8_t>(between(0, 255));
    }
    /// True once in `n` times.
    bool onceIn(int n)
    {
        return between(1, n) == 1;
    }
    template <class Item>
    const Item& oneOf(const std::vector<Item>& items)
    {
        return items[static_cast<std::size_t>(between(0, static_cast<int>(items.size()) - 1))];
    }
    /// An integer that likes the interesting places: around 0 and `size`, far outside, and the ends of the
    /// range.
    int coordinate(int size);
    /// A double that likes the interesting places: zeros, units, fractions, huge ones, infinities and NaN.
    double parameter();

private:
    std::mt19937 engine;
};

/// What random pixels look like. The spare byte is random in all of them.
enum class Palette
{
    Noise,   ///< every channel on its own
    Greys,   ///< mostly equal channels, some of them one or two off
    Few,     ///< a handful of colours, so that equal pixels and runs are common
    Extremes ///< channels of 0, 1, 127, 128, 254 and 255
};

reference::Picture randomPicture(Random& random, int width, int height, Palette palette = Palette::Noise);
/// With a palette picked at random too.
reference::Picture randomPictureOfAnyPalette(Random& random, int width, int height);
/// Rows of the given pixels, all of the same length.
reference::Picture pictureOf(std::initializer_list<std::initializer_list<reference::Pixel>> rows);

/// Sizes worth testing: 1 x 1, all widths around the vector loops' steps and tails, tall, wide.
const std::vector<std::pair<int, int>>& testSizes();
/// The storages that pictures handed to the plug-in can have on this host, those included that must be drawn
/// into a copy.
std::vector<standin::Storage> sourceStorages(const HostSetup& setup);
std::vector<standin::Storage> sourceStorages(const TestHost& host);
/// Whether the plug-in works in a picture's own memory, and not in a copy that the host draws.
bool isLockable(standin::Storage storage);
/// The bytes a pixel of what the plug-in reads: of the picture, or of its copy, which is stored as new
/// pictures are.
int bytesRead(const TestHost& host, const standin::Picture& picture);

/// The storages for which `holds(storage)` is true.
template <class Predicate>
std::vector<standin::Storage> storagesThat(Predicate holds)
{
    std::vector<standin::Storage> storages;
    for (const standin::Storage storage : standin::all<standin::Storage>)
        if (holds(storage))
            storages.push_back(storage);
    return storages;
}
/// QuickDraw's storages: those that the plug-in locks, and those that it does not.
std::vector<standin::Storage> gworlds(bool lockable);

using reference::download;
using reference::upload;

/// Whether and how the spare byte (A, X) is compared.
enum class Alpha
{
    Opaque, ///< wanted alpha 255 stands for the writers' spare byte: 255 in A, 0 in X; others are wanted as
            ///< they are
    Exact,  ///< as it is
    Ignored
};

/// Compares a result with what is wanted. A difference ends the test: it tells the operation (method and
/// arguments), the first wrong pixel, how many there are and in which rows, and keeps both pictures in the
/// folder "failed" beside the test program.
void expectPicture(const reference::Picture& wanted, const standin::Picture& got,
                   const std::string& operation, Alpha alpha = Alpha::Opaque,
                   SourceLine line = SourceLine::here());

/// "ChangeContrastQVR(0.5)", for messages.
std::string callText(const std::string& method, const standin::Arguments& arguments);

/// Calls `method` on a picture whose result is a picture, and compares: the result, and that the source is
/// unchanged. Gives the result.
standin::Picture expectCall(const reference::Picture& wanted, TestHost& host, const standin::Picture& source,
                            const std::string& method, const standin::Arguments& arguments = {},
                            Alpha alpha = Alpha::Opaque, SourceLine line = SourceLine::here());

/// Whether a result is nil, or the false, 0 or -1 that `clean` is.
bool isClean(const standin::Value& result, const standin::Value& clean);
/// Demands a nil result, without an exception and with nothing left locked.
void expectNil(const TestHost& host, const standin::Value& result, const std::string& what = "the call",
               SourceLine line = SourceLine::here());
/// Calls a method of a picture and demands the same.
void expectNil(TestHost& host, const standin::Picture& source, const std::string& method,
               const standin::Arguments& arguments = {}, SourceLine line = SourceLine::here());
