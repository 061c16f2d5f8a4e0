/// \file
/// OpenCV on one thread. Its pictures keep the order A, R, G, B unless a function wants another one; a way
/// that is quicker on three bytes a pixel says so in its name.
#include "peer.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <memory>

namespace peers
{

namespace
{

// What is rounded comes out truncated, but for values within a thousandth of an integer.
constexpr double truncating = -0.499;

cv::Mat pictureOf(const Task& task, std::size_t input = 0)
{
    return cv::Mat(task.height, task.width, CV_8UC4, const_cast<std::uint8_t*>(task.inputs[input].data()));
}

cv::Mat mixed(const cv::Mat& source, int channels, const std::vector<int>& fromTo)
{
    cv::Mat result(source.size(), CV_8UC(channels), cv::Scalar::all(255));
    cv::mixChannels(&source, 1, &result, 1, fromTo.data(), fromTo.size() / 2);
    return result;
}

cv::Mat rgbOf(const Task& task)
{
    return mixed(pictureOf(task), 3, {1, 0, 2, 1, 3, 2});
}

cv::Mat rgbaOf(const Task& task)
{
    return mixed(pictureOf(task), 4, {1, 0, 2, 1, 3, 2, 0, 3});
}

cv::Mat argbOfRgba(const cv::Mat& rgba)
{
    return mixed(rgba, 4, {3, 0, 0, 1, 1, 2, 2, 3});
}

/// A picture as A, R, G, B, whichever of A, R, G, B and R, G, B it was.
Bytes bytesOf(const cv::Mat& mat)
{
    if (mat.channels() == 3)
        return bytesOf(mixed(mat, 4, {0, 1, 1, 2, 2, 3}));
    return Bytes(mat.datastart, mat.dataend);
}

/// `draw(out)` fills a picture.
template <class Draw>
Way drawing(const std::string& name, Draw draw)
{
    const auto out = std::make_shared<cv::Mat>();
    return {name, [out, draw]() mutable { draw(*out); }, [out] { return bytesOf(*out); }};
}

/// `measure()` gives a number.
template <class Measure>
Way measuring(const std::string& name, Measure measure)
{
    const auto number = std::make_shared<std::int32_t>();
    return {name, [number, measure]() mutable { *number = measure(); },
            [number] { return peers::bytesOf(std::vector<std::int32_t>{*number}); }};
}

cv::Scalar argbOf(std::uint32_t colour)
{
    return {255.0, static_cast<double>(colour >> 16 & 255), static_cast<double>(colour >> 8 & 255),
            static_cast<double>(colour & 255)};
}

/// Pixels of one colour, whatever their alpha.
void findColor(const cv::Mat& in, cv::Scalar colour, cv::Mat& mask)
{
    cv::Scalar lowest = colour;
    lowest[0] = 0;
    colour[0] = 255;
    cv::inRange(in, lowest, colour, mask);
}

std::vector<Way> invert(const Task& task)
{
    return {drawing("bitwise_not", [in = pictureOf(task)](cv::Mat& out) { cv::bitwise_not(in, out); })};
}

std::vector<Way> linear(const Task& task)
{
    const std::array<std::array<double, 2>, 3> lines = task.settings["lines"];
    cv::Mat table(1, 256, CV_8UC4);
    for (int level = 0; level < 256; ++level)
        for (int channel = 0; channel < 4; ++channel)
            table.at<cv::Vec4b>(level)[channel] = static_cast<std::uint8_t>(
                channel == 0 ? 255
                             : std::clamp(level * lines[static_cast<std::size_t>(channel - 1)][0] +
                                              lines[static_cast<std::size_t>(channel - 1)][1],
                                          0.0, 255.0));
    std::vector<Way> ways = {
        drawing("LUT", [in = pictureOf(task), table](cv::Mat& out) { cv::LUT(in, table, out); })};
    if (lines[0] == lines[1] && lines[1] == lines[2])
    {
        const auto convert = [line = lines[0]](const cv::Mat& in, cv::Mat& out) {
            in.convertTo(out, -1, line[0], line[1] + truncating);
        };
        ways.push_back(drawing("convertTo", [=, in = pictureOf(task)](cv::Mat& out) { convert(in, out); }));
        ways.push_back(
            drawing("convertTo on 3 bytes", [=, in = rgbOf(task)](cv::Mat& out) { convert(in, out); }));
    }
    return ways;
}

/// cv::transform on four bytes and on three.
std::vector<Way> transforming(const Task& task, const std::array<std::array<double, 4>, 3>& rows)
{
    cv::Mat four = cv::Mat::zeros(4, 5, CV_32F);
    cv::Mat three(3, 4, CV_32F);
    four.at<float>(0, 4) = 255;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
        {
            const double value = rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] +
                                 (column == 3 ? truncating : 0);
            three.at<float>(row, column) = static_cast<float>(value);
            four.at<float>(row + 1, column + 1) = static_cast<float>(value);
        }
    return {drawing("transform", [=, in = pictureOf(task)](cv::Mat& out) { cv::transform(in, out, four); }),
            drawing("transform on 3 bytes",
                    [=, in = rgbOf(task)](cv::Mat& out) { cv::transform(in, out, three); })};
}

std::vector<Way> saturation(const Task& task)
{
    const double factor = (task.settings["amount"].get<double>() + 255) / 255;
    const double weights[] = {0.25, 0.5, 0.25};
    std::array<std::array<double, 4>, 3> rows{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            rows[row][column] = (1 - factor) * weights[column] + (row == column ? factor : 0);
    return transforming(task, rows);
}

std::vector<Way> tint(const Task& task)
{
    return transforming(task, task.settings["matrix"]);
}

std::vector<Way> sepia(const Task& task)
{
    const std::array<double, 3> weights = task.settings["weights"];
    const std::array<double, 3> offsets = task.settings["offsets"];
    std::array<std::array<double, 4>, 3> rows{};
    for (std::size_t row = 0; row < 3; ++row)
        rows[row] = {weights[0] / 1024, weights[1] / 1024, weights[2] / 1024, offsets[row]};
    return transforming(task, rows);
}

Way countingColor(const Task& task, std::uint32_t colour, bool all)
{
    return measuring("inRange and countNonZero",
                     [in = pictureOf(task), colour = argbOf(colour), all, mask = cv::Mat()]() mutable {
                         findColor(in, colour, mask);
                         const int count = cv::countNonZero(mask);
                         return all ? count == static_cast<int>(mask.total()) : count;
                     });
}

std::vector<Way> allBlack(const Task& task)
{
    return {countingColor(task, 0, true)};
}

std::vector<Way> allWhite(const Task& task)
{
    return {countingColor(task, 0xFFFFFF, true)};
}

std::vector<Way> countOneColor(const Task& task)
{
    return {countingColor(task, task.settings["color"], false)};
}

std::vector<Way> replaceOneColor(const Task& task)
{
    return {drawing("inRange and setTo", [in = pictureOf(task), colour = argbOf(task.settings["color"]),
                                          replacement = argbOf(task.settings["replacement"]),
                                          mask = cv::Mat()](cv::Mat& out) mutable {
        findColor(in, colour, mask);
        in.copyTo(out);
        out.setTo(replacement, mask);
    })};
}

std::vector<Way> histograms(const Task& task)
{
    const auto counts = std::make_shared<std::array<cv::Mat, 3>>();
    return {{"calcHist",
             [counts, in = pictureOf(task)] {
                 const float range[] = {0, 256};
                 const float* ranges[] = {range};
                 const int levels = 256;
                 for (int channel = 1; channel <= 3; ++channel)
                     cv::calcHist(&in, 1, &channel, cv::Mat(),
                                  (*counts)[static_cast<std::size_t>(channel - 1)], 1, &levels, ranges);
             },
             [counts] {
                 std::vector<std::uint32_t> numbers;
                 for (const cv::Mat& mat : *counts)
                     for (int level = 0; level < 256; ++level)
                         numbers.push_back(static_cast<std::uint32_t>(mat.at<float>(level)));
                 return peers::bytesOf(numbers);
             }}};
}

std::vector<Way> tables(const Task& task)
{
    cv::Mat table(1, 256, CV_8UC4, cv::Scalar::all(255));
    for (int level = 0; level < 256; ++level)
        for (int channel = 0; channel < 3; ++channel)
            table.at<cv::Vec4b>(level)[channel + 1] =
                task.inputs[1][static_cast<std::size_t>(256 * channel + level)];
    return {drawing("LUT", [in = pictureOf(task), table](cv::Mat& out) { cv::LUT(in, table, out); })};
}

std::vector<Way> replaceChannel(const Task& task)
{
    const int channel = task.settings["channel"];
    return {drawing("copyTo and mixChannels",
                    [in = pictureOf(task), other = pictureOf(task, 1), channel](cv::Mat& out) {
                        in.copyTo(out);
                        const int fromTo[] = {channel, channel};
                        cv::mixChannels(&other, 1, &out, 1, fromTo, 1);
                    })};
}

std::vector<Way> combineChannels(const Task& task)
{
    return {drawing("mixChannels", [in = std::array{pictureOf(task, 0), pictureOf(task, 1),
                                                    pictureOf(task, 2)}](cv::Mat& out) {
        out.create(in[0].size(), in[0].type());
        const int fromTo[] = {0, 0, 1, 1, 6, 2, 11, 3};
        cv::mixChannels(in.data(), in.size(), &out, 1, fromTo, 4);
    })};
}

std::vector<Way> maximumOfTwo(const Task& task)
{
    return {drawing("max",
                    [a = pictureOf(task, 0), b = pictureOf(task, 1)](cv::Mat& out) { cv::max(a, b, out); })};
}

/// So many rows at a time that what lies between two functions stays in the cache.
constexpr int strip = 8;

std::vector<Way> alphaToGrey(const Task& task)
{
    const auto out = std::make_shared<cv::Mat>(task.height, task.width, CV_8UC4);
    return {
        {"extractChannel and cvtColor",
         [out, in = pictureOf(task), swap = task.settings["swap"].get<bool>(), grey = cv::Mat()]() mutable {
             for (int row = 0; row < in.rows; row += strip)
             {
                 const cv::Range rows(row, std::min(row + strip, in.rows));
                 cv::extractChannel(in.rowRange(rows), grey, 0);
                 if (swap)
                     cv::bitwise_not(grey, grey);
                 cv::Mat part = out->rowRange(rows);
                 cv::cvtColor(grey, part, cv::COLOR_GRAY2RGBA);
             }
         },
         [out] { return bytesOf(argbOfRgba(*out)); }}};
}

std::vector<Way> greyToAlpha(const Task& task)
{
    if (task.settings["swap"])
        return {};
    const cv::Mat picture = pictureOf(task).clone();
    return {{"mixChannels",
             [picture, mask = pictureOf(task, 1)] {
                 cv::Mat out = picture;
                 const int fromTo[] = {1, 0};
                 cv::mixChannels(&mask, 1, &out, 1, fromTo, 1);
             },
             [picture] { return bytesOf(picture); }}};
}

std::vector<Way> rotateColumns(const Task& task)
{
    const int delta = task.settings["delta"];
    const int shift = (delta % task.width + task.width) % task.width;
    return {drawing("two copyTo into another picture", [in = pictureOf(task), shift](cv::Mat& out) {
        out.create(in.size(), in.type());
        in.colRange(0, in.cols - shift).copyTo(out.colRange(shift, in.cols));
        in.colRange(in.cols - shift, in.cols).copyTo(out.colRange(0, shift));
    })};
}

std::vector<Way> rotateRows(const Task& task)
{
    const int delta = task.settings["delta"];
    const int shift = (delta % task.height + task.height) % task.height;
    return {drawing("two copyTo into another picture", [in = pictureOf(task), shift](cv::Mat& out) {
        out.create(in.size(), in.type());
        in.rowRange(0, in.rows - shift).copyTo(out.rowRange(shift, in.rows));
        in.rowRange(in.rows - shift, in.rows).copyTo(out.rowRange(0, shift));
    })};
}

std::vector<Way> find(const Task& task)
{
    const cv::Mat sub(task.settings["subHeight"], task.settings["subWidth"], CV_8UC4,
                      const_cast<std::uint8_t*>(task.inputs[1].data()));
    const auto place = std::make_shared<std::vector<std::int32_t>>();
    return {{"matchTemplate",
             [in = pictureOf(task), sub, place, score = cv::Mat()]() mutable {
                 cv::matchTemplate(in, sub, score, cv::TM_SQDIFF);
                 cv::Point best;
                 cv::minMaxLoc(score, nullptr, nullptr, &best);
                 const bool fits = cv::norm(in(cv::Rect(best, sub.size())), sub, cv::NORM_INF) == 0;
                 *place =
                     fits ? std::vector<std::int32_t>{1, best.x, best.y} : std::vector<std::int32_t>{0, 0, 0};
             },
             [place] { return peers::bytesOf(*place); }}};
}

std::vector<Way> pack(const Task& task)
{
    const auto out = std::make_shared<cv::Mat>();
    return {{"cvtColor", [out, in = rgbaOf(task)] { cv::cvtColor(in, *out, cv::COLOR_RGBA2RGB); },
             [out] { return Bytes(out->datastart, out->dataend); }}};
}

std::vector<Way> unpack(const Task& task)
{
    const cv::Mat in(task.height, task.width, CV_8UC3, const_cast<std::uint8_t*>(task.inputs[0].data()));
    const auto out = std::make_shared<cv::Mat>();
    return {{"cvtColor", [out, in] { cv::cvtColor(in, *out, cv::COLOR_RGB2RGBA); },
             [out] { return bytesOf(argbOfRgba(*out)); }}};
}

/// The labels of areas that touch along edges, and the boxes around them, united as the plug-in's growing
/// rectangles unite them: a box takes in whatever area has a pixel in it or along its sides.
class AreaBoxes
{
public:
    void draw(const cv::Mat& in, cv::Mat& out)
    {
        cv::extractChannel(in, red, 1);
        cv::extractChannel(in, green, 2);
        cv::extractChannel(in, blue, 3);
        cv::compare(red, green, mask, cv::CMP_NE);
        cv::compare(green, blue, red, cv::CMP_NE);
        cv::bitwise_or(mask, red, mask);
        const int count = cv::connectedComponentsWithStats(mask, labels, stats, centroids, 4, CV_32S);
        taken.assign(static_cast<std::size_t>(count), false);
        order.clear();
        for (int label = 1; label < count; ++label)
            order.push_back({boxOf(label).y, firstColumn(label), label});
        std::sort(order.begin(), order.end());
        out.create(in.size(), in.type());
        out.setTo(cv::Scalar::all(255));
        for (const auto& [row, column, label] : order)
            if (!taken[static_cast<std::size_t>(label)])
                out(grown(label)).setTo(cv::Scalar(255, 0, 0, 0));
    }

private:
    cv::Rect boxOf(int label) const
    {
        const int* numbers = stats.ptr<int>(label);
        return {numbers[cv::CC_STAT_LEFT], numbers[cv::CC_STAT_TOP], numbers[cv::CC_STAT_WIDTH],
                numbers[cv::CC_STAT_HEIGHT]};
    }

    int firstColumn(int label) const
    {
        const cv::Rect box = boxOf(label);
        const int* row = labels.ptr<int>(box.y);
        return static_cast<int>(std::find(row + box.x, row + box.x + box.width, label) - row);
    }

    cv::Rect grown(int label)
    {
        cv::Rect box = boxOf(label);
        taken[static_cast<std::size_t>(label)] = true;
        cv::Rect before;
        while (box != before)
        {
            before = box;
            const cv::Rect picture(0, 0, labels.cols, labels.rows);
            // Areas inside of the box and not at its sides are taken too, and change nothing.
            for (const cv::Rect look : {cv::Rect(before.x, before.y - 1, before.width, before.height + 2),
                                        cv::Rect(before.x - 1, before.y, before.width + 2, before.height)})
                takeIn(look & picture, box);
        }
        return box;
    }

    void takeIn(cv::Rect look, cv::Rect& box)
    {
        for (int y = look.y; y < look.y + look.height; ++y)
            for (int x = look.x; x < look.x + look.width; ++x)
            {
                const int label = labels.at<int>(y, x);
                if (label == 0 || taken[static_cast<std::size_t>(label)])
                    continue;
                taken[static_cast<std::size_t>(label)] = true;
                box |= boxOf(label);
            }
    }

    cv::Mat red, green, blue, mask, labels, stats, centroids;
    std::vector<bool> taken;
    std::vector<std::tuple<int, int, int>> order;
};

std::vector<Way> rectangles(const Task& task)
{
    return {drawing("connectedComponentsWithStats",
                    [in = pictureOf(task), boxes = std::make_shared<AreaBoxes>()](cv::Mat& out) {
                        boxes->draw(in, out);
                    })};
}

} // namespace

} // namespace peers

int main()
{
    using namespace peers;
    cv::setNumThreads(1);
    return serve("OpenCV", {{"invert", invert},
                            {"linear", linear},
                            {"saturation", saturation},
                            {"all black", allBlack},
                            {"all white", allWhite},
                            {"count one colour", countOneColor},
                            {"replace one colour", replaceOneColor},
                            {"histograms", histograms},
                            {"tables", tables},
                            {"replace a channel", replaceChannel},
                            {"combine channels", combineChannels},
                            {"maximum of two", maximumOfTwo},
                            {"alpha to grey", alphaToGrey},
                            {"grey to alpha", greyToAlpha},
                            {"rotate rows", rotateRows},
                            {"rotate columns", rotateColumns},
                            {"find", find},
                            {"pack", pack},
                            {"unpack", unpack},
                            {"tint", tint},
                            {"sepia", sepia},
                            {"rectangles", rectangles}});
}
