#include "media/png.h"

#include "host/error.h"
#include "media/reader.h"

#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <future>
#include <limits>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>

namespace media
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

/// How far back deflate can refer.
constexpr std::size_t window = 32768;

/// A row of the file is a byte that names a prediction, and what each byte differs from it.
struct Rows
{
    explicit Rows(const Image& image)
        : bytes(image.bytes.data()),
          pixelSize(static_cast<std::size_t>(image.channels)),
          rowSize(static_cast<std::size_t>(image.width) * pixelSize),
          count(static_cast<std::size_t>(image.height))
    {
    }

    std::size_t storedSize() const
    {
        return 1 + rowSize;
    }

    const std::uint8_t* bytes;
    std::size_t pixelSize;
    std::size_t rowSize;
    std::size_t count;
};

using Prediction = int(int left, int above, int aboveLeft);

int nothing(int, int, int)
{
    return 0;
}

int fromLeft(int left, int, int)
{
    return left;
}

int fromAbove(int, int above, int)
{
    return above;
}

int mean(int left, int above, int)
{
    return (left + above) / 2;
}

/// That neighbour which comes closest to the plane through all three, as Paeth proposed.
int nearest(int left, int above, int aboveLeft)
{
    // 16 bits, since eight of them fit into a register.
    const auto leftError = static_cast<std::int16_t>(std::abs(above - aboveLeft));
    const auto aboveError = static_cast<std::int16_t>(std::abs(left - aboveLeft));
    const auto aboveLeftError = static_cast<std::int16_t>(std::abs(left + above - 2 * aboveLeft));
    if (leftError <= aboveError && leftError <= aboveLeftError)
        return left;
    return aboveError <= aboveLeftError ? above : aboveLeft;
}

/// Writes what a row differs from its prediction, and gives the sum of the differences. In front of both rows
/// stands an empty pixel.
template <Prediction predict>
std::uint32_t difference(const Bytes& row, const Bytes& above, std::size_t pixelSize, std::uint8_t* result)
{
    const std::uint8_t* here = row.data() + pixelSize;
    const std::uint8_t* up = above.data() + pixelSize;
    const std::uint8_t* left = row.data();
    const std::uint8_t* upLeft = above.data();
    const std::size_t size = row.size() - pixelSize;
    for (std::size_t index = 0; index < size; ++index)
        result[index] =
            static_cast<std::uint8_t>(here[index] - predict(left[index], up[index], upLeft[index]));
    std::uint32_t sum = 0;
    for (std::size_t index = 0; index < size; ++index)
        sum += static_cast<std::uint32_t>(std::abs(static_cast<std::int8_t>(result[index])));
    return sum;
}

/// In the order of their numbers in the file.
constexpr std::array predictions{difference<nothing>, difference<fromLeft>, difference<fromAbove>,
                                 difference<mean>, difference<nearest>};

/// Stores rows, each with the prediction that comes closest.
class Predictor
{
public:
    Predictor(const Rows& all, bool predicts)
        : rows(all),
          tried(predicts ? predictions.size() : 1),
          row(rows.pixelSize + rows.rowSize),
          above(row.size()),
          results(tried, Bytes(rows.storedSize()))
    {
    }

    Bytes stored(std::size_t begin, std::size_t end)
    {
        Bytes result;
        result.reserve((end - begin) * rows.storedSize());
        load(above, begin - 1);
        for (std::size_t y = begin; y < end; ++y)
        {
            load(row, y);
            const Bytes& best = bestResult();
            result.insert(result.end(), best.begin(), best.end());
            std::swap(row, above);
        }
        return result;
    }

private:
    /// Above the first row lies an empty one.
    void load(Bytes& target, std::size_t y) const
    {
        const auto begin = target.begin() + static_cast<std::ptrdiff_t>(rows.pixelSize);
        if (y < rows.count)
            std::copy_n(rows.bytes + y * rows.rowSize, rows.rowSize, begin);
        else
            std::fill(begin, target.end(), std::uint8_t{0});
    }

    const Bytes& bestResult()
    {
        std::size_t best = 0;
        std::uint32_t smallest = 0;
        for (std::size_t kind = 0; kind < tried; ++kind)
        {
            results[kind].front() = static_cast<std::uint8_t>(kind);
            const std::uint32_t sum = predictions[kind](row, above, rows.pixelSize, results[kind].data() + 1);
            if (kind == 0 || sum < smallest)
            {
                best = kind;
                smallest = sum;
            }
        }
        return results[best];
    }

    const Rows& rows;
    std::size_t tried;
    Bytes row;
    Bytes above;
    std::vector<Bytes> results;
};

/// How zlib is to search.
struct Effort
{
    int level;
    int strategy;
};

/// What a stream goes on with after the bytes before `begin`.
Bytes deflated(ByteView bytes, std::size_t begin, std::size_t end, Effort effort, bool endsStream)
{
    constexpr std::size_t flushSize = 16;
    z_stream stream{};
    if (deflateInit2(&stream, effort.level, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL, effort.strategy) != Z_OK)
        throw standin::Error("no memory to compress a picture");
    const std::unique_ptr<z_stream, int (*)(z_stream*)> release(&stream, deflateEnd);
    const ByteView before = bytes.subspan(begin - std::min(begin, window), std::min(begin, window));
    deflateSetDictionary(&stream, before.data(), static_cast<uInt>(before.size()));
    Bytes result(deflateBound(&stream, static_cast<uLong>(end - begin)) + flushSize);
    stream.next_in = bytes.data() + begin;
    stream.avail_in = static_cast<uInt>(end - begin);
    stream.next_out = result.data();
    stream.avail_out = static_cast<uInt>(result.size());
    deflate(&stream, endsStream ? Z_FINISH : Z_SYNC_FLUSH);
    result.resize(stream.total_out);
    return result;
}

/// What makes the bytes from `begin` on smallest, tried on some of them. A search that takes long has to save
/// so many percent: on the noise of photographs it hardly ever does.
Effort effortFor(ByteView bytes, std::size_t begin, int compression, std::size_t worth)
{
    constexpr std::size_t sampleSize = 16384;
    constexpr int smallest = 9;
    constexpr std::size_t percent = 100;
    if (compression == 0)
        return {0, Z_DEFAULT_STRATEGY};
    const std::array<Effort, 4> efforts{
        {{1, Z_RLE}, {1, Z_DEFAULT_STRATEGY}, {compression, Z_DEFAULT_STRATEGY}, {compression, Z_FILTERED}}};
    const std::size_t size = std::min(sampleSize, bytes.size() - begin);
    const std::size_t sample = begin + (bytes.size() - begin - size) / 2;
    Effort best = efforts.front();
    std::size_t lowestCost = std::numeric_limits<std::size_t>::max();
    for (const Effort& effort : efforts)
    {
        const bool takesLong = effort.level != 1 && compression != smallest;
        const std::size_t cost = deflated(bytes, sample, sample + size, effort, true).size() *
                                 (takesLong ? percent + worth : percent);
        if (cost >= lowestCost)
            continue;
        lowestCost = cost;
        best = effort;
    }
    return best;
}

void putNumber(Bytes& file, std::uint32_t number)
{
    constexpr int bitsPerByte = 8;
    for (int shift = 3 * bitsPerByte; shift >= 0; shift -= bitsPerByte)
        file.push_back(static_cast<std::uint8_t>(number >> shift));
}

void putChunk(Bytes& file, std::string_view name, ByteView content)
{
    putNumber(file, static_cast<std::uint32_t>(content.size()));
    const std::size_t begin = file.size();
    file.insert(file.end(), name.begin(), name.end());
    file.insert(file.end(), content.begin(), content.end());
    putNumber(file, static_cast<std::uint32_t>(
                        crc32(0, file.data() + begin, static_cast<uInt>(file.size() - begin))));
}

/// Rows that are compressed in one go.
struct Stripe
{
    Bytes deflated;
    std::size_t size = 0;
    uLong checksum = 0;
};

Stripe stripeOf(const Rows& rows, std::size_t begin, std::size_t end, int compression, std::size_t worth)
{
    // What deflate refers back to is predicted once more.
    const std::size_t before = std::min(begin, (window + rows.storedSize() - 1) / rows.storedSize());
    const Bytes stored = Predictor(rows, compression != 0).stored(begin - before, end);
    const std::size_t first = before * rows.storedSize();
    Stripe stripe;
    stripe.size = stored.size() - first;
    stripe.checksum = adler32(1, stored.data() + first, static_cast<uInt>(stripe.size));
    stripe.deflated = deflated(stored, first, stored.size(), effortFor(stored, first, compression, worth),
                               end == rows.count);
    return stripe;
}

/// Calls `work` with 0 to `count` - 1, on all processors.
template <class Work>
void inParallel(std::size_t count, Work work)
{
    std::atomic<std::size_t> next = 0;
    const auto worker = [&] {
        for (std::size_t index = next++; index < count; index = next++)
            work(index);
    };
    std::vector<std::future<void>> helpers;
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    while (helpers.size() + 1 < std::min(processors, count))
        helpers.push_back(std::async(std::launch::async | std::launch::deferred, worker));
    worker();
    for (std::future<void>& helper : helpers)
        helper.get();
}

Bytes encodedAsItIs(const Image& image, int compression)
{
    constexpr std::size_t stripeSize = 1 << 20;
    constexpr std::size_t leastWorth = 2;
    constexpr std::size_t stripesPerPercent = 4;
    constexpr std::array<std::uint8_t, 5> colourTypes{0, 0, 4, 2, 6};
    constexpr std::uint8_t bitsPerChannel = 8;
    // Deflate with its largest window.
    constexpr std::array<std::uint8_t, 2> zlibHeader{0x78, 0x9C};

    const Rows rows(image);
    const std::size_t rowsPerStripe = std::max<std::size_t>(stripeSize / rows.storedSize(), 1);
    std::vector<Stripe> stripes((rows.count + rowsPerStripe - 1) / rowsPerStripe);
    // The larger a picture, the longer one waits for it.
    const std::size_t worth = std::max<std::size_t>(leastWorth, stripes.size() / stripesPerPercent);
    inParallel(stripes.size(), [&](std::size_t index) {
        const std::size_t begin = index * rowsPerStripe;
        stripes[index] =
            stripeOf(rows, begin, std::min(begin + rowsPerStripe, rows.count), compression, worth);
    });

    Bytes file{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    putNumber(header, static_cast<std::uint32_t>(image.width));
    putNumber(header, static_cast<std::uint32_t>(image.height));
    header.insert(header.end(), {bitsPerChannel, colourTypes.at(rows.pixelSize), 0, 0, 0});
    putChunk(file, "IHDR", header);
    putChunk(file, "IDAT", zlibHeader);
    uLong checksum = adler32(0, nullptr, 0);
    for (Stripe& stripe : stripes)
    {
        checksum = adler32_combine(checksum, stripe.checksum, static_cast<z_off_t>(stripe.size));
        putChunk(file, "IDAT", std::exchange(stripe.deflated, {}));
    }
    Bytes end;
    putNumber(end, static_cast<std::uint32_t>(checksum));
    putChunk(file, "IDAT", end);
    putChunk(file, "IEND", {});
    return file;
}

} // namespace

std::vector<std::uint8_t> encodedPng(const Image& image, int compression)
{
    // One level stands for all colours, and beside it alpha, if there is any.
    constexpr int sparedChannels = 2;
    if (isGrey(image))
        return encodedAsItIs(channelsOf(image, sparedChannels, image.channels - sparedChannels), compression);
    return encodedAsItIs(image, compression);
}

} // namespace media
