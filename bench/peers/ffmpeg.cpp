/// \file
/// FFmpeg's filters on one thread, each in a graph of its own that is fed one frame a run. What works on
/// planes says so in its name.
#include "peer.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <memory>
#include <numeric>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

namespace peers
{

namespace
{

void expect(bool condition, const std::string& what)
{
    if (!condition)
        throw std::runtime_error("FFmpeg: " + what);
}

struct FreeFrame
{
    void operator()(AVFrame* frame) const
    {
        av_frame_free(&frame);
    }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

/// Where a format keeps one channel.
struct Place
{
    int plane;
    int offset;
    int step;
};

Place placeOf(AVPixelFormat format, int channel)
{
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
    const AVComponentDescriptor& component = descriptor->comp[channel];
    return {component.plane, component.offset, component.step};
}

/// Copies the channels between a frame and rows of four (A, R, G, B) or three (R, G, B) bytes a pixel.
template <class Copy>
void forEachChannel(const AVFrame& frame, int pixelSize, Copy copy)
{
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const int channels = av_pix_fmt_desc_get(format)->nb_components;
    // libavutil counts R, G, B and A, as we do but for where A stands.
    for (int channel = 0; channel < channels; ++channel)
    {
        const int byte = pixelSize == 3 ? channel : channel == 3 ? 0 : channel + 1;
        if (byte >= pixelSize)
            continue;
        const Place place = placeOf(format, channel);
        for (int y = 0; y < frame.height; ++y)
        {
            std::uint8_t* row = frame.data[place.plane] + y * frame.linesize[place.plane] + place.offset;
            for (int x = 0; x < frame.width; ++x)
                copy(row[x * place.step], (static_cast<std::size_t>(y) * frame.width + x) * pixelSize + byte);
        }
    }
}

Frame frameOf(const Task& task, std::size_t input, AVPixelFormat format, int pixelSize)
{
    Frame frame(av_frame_alloc());
    frame->width = task.width;
    frame->height = task.height;
    frame->format = format;
    expect(av_frame_get_buffer(frame.get(), 0) >= 0, "no memory for a frame");
    const Bytes& bytes = task.inputs[input];
    forEachChannel(*frame, pixelSize, [&](std::uint8_t& inFrame, std::size_t at) { inFrame = bytes[at]; });
    return frame;
}

class Graph
{
public:
    /// A chain of filters that begins with [0], [1] and so on, and its inputs.
    Graph(const Task& task, const std::string& filters, AVPixelFormat format, int inputs,
          AVPixelFormat resultFormat, int pixelSize)
        : graph(avfilter_graph_alloc())
    {
        graph->nb_threads = 1;
        AVFilterInOut* open = nullptr;
        for (int input = inputs - 1; input >= 0; --input)
        {
            std::ostringstream settings;
            settings << "video_size=" << task.width << "x" << task.height << ":pix_fmt=" << format
                     << ":time_base=1/25";
            AVFilterContext* source = nullptr;
            expect(avfilter_graph_create_filter(&source, avfilter_get_by_name("buffer"), nullptr,
                                                settings.str().c_str(), nullptr, graph.get()) >= 0,
                   "no source");
            open = inOut(std::to_string(input), source, open);
            sources.insert(sources.begin(), source);
            frames.insert(frames.begin(), frameOf(task, static_cast<std::size_t>(input), format, pixelSize));
        }
        expect(avfilter_graph_create_filter(&sink, avfilter_get_by_name("buffersink"), nullptr, nullptr,
                                            nullptr, graph.get()) >= 0,
               "no sink");
        const AVPixelFormat formats[] = {resultFormat, AV_PIX_FMT_NONE};
        expect(av_opt_set_int_list(sink, "pix_fmts", formats, AV_PIX_FMT_NONE, AV_OPT_SEARCH_CHILDREN) >= 0,
               "no result format");
        AVFilterInOut* result = inOut("out", sink, nullptr);
        const int parsed =
            avfilter_graph_parse_ptr(graph.get(), (filters + "[out]").c_str(), &result, &open, nullptr);
        avfilter_inout_free(&open);
        avfilter_inout_free(&result);
        expect(parsed >= 0, "cannot parse " + filters.substr(0, 40));
        expect(avfilter_graph_config(graph.get(), nullptr) >= 0, "cannot set up " + filters.substr(0, 40));
        // A filter in between would make the comparison unfair.
        for (unsigned index = 0; index < graph->nb_filters; ++index)
            expect(std::string(graph->filters[index]->filter->name) != "scale" ||
                       filters.find("format") != std::string::npos,
                   filters.substr(0, 40) + " converts formats");
    }

    void run()
    {
        av_frame_unref(made.get());
        for (std::size_t input = 0; input < sources.size(); ++input)
        {
            // A filter that waits for several inputs wants to know their order.
            frames[input]->pts = time;
            expect(av_buffersrc_add_frame_flags(sources[input], frames[input].get(),
                                                AV_BUFFERSRC_FLAG_KEEP_REF) >= 0,
                   "a frame is refused");
        }
        ++time;
        expect(av_buffersink_get_frame(sink, made.get()) >= 0, "no frame comes out");
    }

    /// The last result with so many bytes a pixel.
    Bytes result(int pixelSize) const
    {
        Bytes bytes(static_cast<std::size_t>(made->width) * made->height * pixelSize, 255);
        forEachChannel(*made, pixelSize, [&](std::uint8_t& inFrame, std::size_t at) { bytes[at] = inFrame; });
        return bytes;
    }

private:
    struct FreeGraph
    {
        void operator()(AVFilterGraph* graph) const
        {
            avfilter_graph_free(&graph);
        }
    };

    static AVFilterInOut* inOut(const std::string& name, AVFilterContext* filter, AVFilterInOut* next)
    {
        AVFilterInOut* end = avfilter_inout_alloc();
        end->name = av_strdup(name.c_str());
        end->filter_ctx = filter;
        end->pad_idx = 0;
        end->next = next;
        return end;
    }

    std::unique_ptr<AVFilterGraph, FreeGraph> graph;
    std::vector<AVFilterContext*> sources;
    std::vector<Frame> frames;
    AVFilterContext* sink = nullptr;
    Frame made{av_frame_alloc()};
    std::int64_t time = 0;
};

struct Shape
{
    AVPixelFormat format = AV_PIX_FMT_ARGB;
    AVPixelFormat resultFormat = AV_PIX_FMT_ARGB;
    int inputs = 1;
    int inputPixelSize = 4;
    int resultPixelSize = 4;
};

constexpr Shape planes{AV_PIX_FMT_GBRAP, AV_PIX_FMT_GBRAP};

Way filtering(const std::string& name, const Task& task, const std::string& filters, Shape shape = {})
{
    const auto graph = std::make_shared<Graph>(task, filters, shape.format, shape.inputs, shape.resultFormat,
                                               shape.inputPixelSize);
    return {name, [graph] { graph->run(); }, [graph, shape] { return graph->result(shape.resultPixelSize); }};
}

Shape withInputs(Shape shape, int inputs)
{
    shape.inputs = inputs;
    return shape;
}

/// "r='...':g='...':b='...'" of what `expression` gives for each channel.
template <class Expression>
std::string channelOptions(Expression expression)
{
    std::string options;
    for (std::size_t channel = 0; channel < 3; ++channel)
        options += std::string(channel == 0 ? "" : ":") + "rgb"[channel] + "='" + expression(channel) + "'";
    return options;
}

std::string text(double number)
{
    std::ostringstream stream;
    stream << std::setprecision(17) << number;
    return stream.str();
}

std::vector<Way> invert(const Task& task)
{
    return {filtering("negate on planes", task, "[0]negate", planes),
            filtering("lutrgb", task, "[0]lutrgb=r=negval:g=negval:b=negval")};
}

std::vector<Way> linear(const Task& task)
{
    const std::array<std::array<double, 2>, 3> lines = task.settings["lines"];
    return {filtering("lutrgb", task, "[0]lutrgb=" + channelOptions([&](std::size_t channel) {
                                          return "clip(val*(" + text(lines[channel][0]) + ")+(" +
                                                 text(lines[channel][1]) + "),0,255)";
                                      }))};
}

/// An expression for so many of a table's entries, with no more nesting than the parser bears.
std::string lookUp(const std::uint8_t* table, int first, int count)
{
    if (count == 1)
        return std::to_string(table[first]);
    const int half = count / 2;
    return "if(lt(val," + std::to_string(first + half) + ")," + lookUp(table, first, half) + "," +
           lookUp(table, first + half, half) + ")";
}

std::vector<Way> tables(const Task& task)
{
    return {filtering("lutrgb", task, "[0]lutrgb=" + channelOptions([&](std::size_t channel) {
                                          return lookUp(task.inputs[1].data() + 256 * channel, 0, 256);
                                      }))};
}

/// mergeplanes counts the planes of GBRAP: G, B, R, A. Each digit pair names the input and its plane.
std::vector<Way> merging(const Task& task, const std::string& mapping, int inputs)
{
    std::string filters;
    for (int input = 0; input < inputs; ++input)
        filters += "[" + std::to_string(input) + "]";
    return {filtering("mergeplanes on planes", task, filters + "mergeplanes=0x" + mapping + ":gbrap",
                      withInputs(planes, inputs))};
}

std::vector<Way> replaceChannel(const Task& task)
{
    const std::size_t planeOf[] = {0, 2, 0, 1};
    std::string mapping = "00010203";
    mapping[2 * planeOf[task.settings["channel"].get<std::size_t>()]] = '1';
    return merging(task, mapping, 2);
}

std::vector<Way> combineChannels(const Task& task)
{
    return merging(task, "10210203", 3);
}

std::vector<Way> maximumOfTwo(const Task& task)
{
    return {filtering("blend on planes", task, "[0][1]blend=all_mode=lighten", withInputs(planes, 2))};
}

std::string mixer(const std::array<std::array<double, 4>, 3>& rows)
{
    std::string options;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            options += std::string(options.empty() ? "" : ":") + "rgb"[row] + "rgb"[column] + "=" +
                       text(rows[row][column]);
    return "[0]colorchannelmixer=" + options;
}

std::vector<Way> tint(const Task& task)
{
    return {filtering("colorchannelmixer", task, mixer(task.settings["matrix"]))};
}

std::vector<Way> saturation(const Task& task)
{
    const double factor = (task.settings["amount"].get<double>() + 255) / 255;
    const double weights[] = {0.25, 0.5, 0.25};
    std::array<std::array<double, 4>, 3> rows{};
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 3; ++column)
            rows[row][column] = (1 - factor) * weights[column] + (row == column ? factor : 0);
    return {filtering("colorchannelmixer", task, mixer(rows))};
}

std::vector<Way> pack(const Task& task)
{
    std::vector<Way> ways;
    for (const AVPixelFormat format : {AV_PIX_FMT_ARGB, AV_PIX_FMT_RGBA})
        ways.push_back(filtering(std::string("format from ") + av_get_pix_fmt_name(format), task,
                                 "[0]format=rgb24", {format, AV_PIX_FMT_RGB24, 1, 4, 3}));
    return ways;
}

std::vector<Way> unpack(const Task& task)
{
    std::vector<Way> ways;
    for (const AVPixelFormat format : {AV_PIX_FMT_ARGB, AV_PIX_FMT_RGBA})
        ways.push_back(filtering(std::string("format to ") + av_get_pix_fmt_name(format), task,
                                 std::string("[0]format=") + av_get_pix_fmt_name(format),
                                 {AV_PIX_FMT_RGB24, format, 1, 3, 4}));
    return ways;
}

std::vector<Way> table3d(const Task& task)
{
    // The filter reads its table from a file, in which red changes fastest.
    constexpr std::size_t nodes = 16;
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("table3d-" + std::to_string(getpid()) + ".cube");
    const auto* levels = reinterpret_cast<const double*>(task.inputs[1].data());
    std::ofstream file(path);
    file << "LUT_3D_SIZE " << nodes << "\n" << std::setprecision(9);
    for (std::size_t b = 0; b < nodes; ++b)
        for (std::size_t g = 0; g < nodes; ++g)
            for (std::size_t r = 0; r < nodes; ++r)
            {
                const double* node = levels + 3 * ((r * nodes + g) * nodes + b);
                file << node[0] / 255 << " " << node[1] / 255 << " " << node[2] / 255 << "\n";
            }
    file.close();
    std::vector<Way> ways;
    for (const Shape& shape : {Shape{}, planes})
        ways.push_back(
            filtering(std::string("lut3d tetrahedral") + (shape.format == planes.format ? " on planes" : ""),
                      task, "[0]lut3d=file=" + path.string() + ":interp=tetrahedral", shape));
    std::filesystem::remove(path);
    return ways;
}

} // namespace

} // namespace peers

int main()
{
    using namespace peers;
    av_log_set_level(AV_LOG_ERROR);
    return serve("FFmpeg", {{"invert", invert},
                            {"linear", linear},
                            {"tables", tables},
                            {"replace a channel", replaceChannel},
                            {"combine channels", combineChannels},
                            {"maximum of two", maximumOfTwo},
                            {"tint", tint},
                            {"saturation", saturation},
                            {"pack", pack},
                            {"unpack", unpack},
                            {"3D table", table3d}});
}
