#include "cli/demo_page.h"

#include "cli/histogram.h"
#include "host/error.h"
#include "host/names.h"

#include <kainjow/mustache.hpp>

#include <algorithm>
#include <iomanip>
#include <sstream>
#include <utility>

#include "build_info.h"
#include "demo_template.h"

namespace cli
{

using kainjow::mustache::data;

namespace
{

data listOf(const std::vector<std::string>& texts)
{
    data list{data::type::list};
    for (const std::string& text : texts)
        list << data{"text", text};
    return list;
}

std::string sizeText(int width, int height)
{
    return std::to_string(width) + " × " + std::to_string(height);
}

data dataOf(const Shown& picture)
{
    data result;
    result.set("file", picture.file);
    result.set("width", std::to_string(picture.width));
    result.set("height", std::to_string(picture.height));
    result.set("caption", picture.caption);
    result.set("alternative", picture.alternative);
    result.set("size", sizeText(picture.fullWidth, picture.fullHeight));
    if (picture.width != picture.fullWidth)
        result.set("shownSize", sizeText(picture.width, picture.height));
    return result;
}

data dataOf(const Card& card)
{
    data result;
    result.set("name", card.name);
    result.set("shows", card.shows);
    result.set("code", card.code);
    result.set("failure", card.failure);
    result.set("failed", !card.failure.empty());
    data pictures{data::type::list};
    for (const Shown& picture : card.pictures)
        pictures << dataOf(picture);
    result.set("pictures", pictures);
    if (!card.outcome.curves.empty())
        result.set("chart", histogramSvg(card.outcome.curves));
    result.set("printed", listOf(card.outcome.printed));
    result.set("anyPrinted", !card.outcome.printed.empty());
    data times{data::type::list};
    for (const TimeRow& row : timeRows(card.name, card.outcome.calls))
    {
        data entry;
        entry.set("call", row.call);
        entry.set("plugin", timeText(row.times.plugin));
        entry.set("host", timeText(row.times.host));
        times << entry;
    }
    result.set("times", times);
    result.set("anyTimes", !card.outcome.calls.empty());
    return result;
}

standin::CallTimes sumOf(const std::vector<standin::CallTimes>& times)
{
    standin::CallTimes sum;
    for (const standin::CallTimes& each : times)
    {
        sum.plugin += each.plugin;
        sum.host += each.host;
    }
    return sum;
}

} // namespace

std::vector<TimeRow> timeRows(const std::string& name, const std::vector<TimedCall>& calls)
{
    constexpr std::size_t few = 3;
    std::vector<std::pair<std::string, std::vector<standin::CallTimes>>> methods;
    for (const TimedCall& call : calls)
    {
        auto found = std::find_if(methods.begin(), methods.end(),
                                  [&](const auto& method) { return method.first == call.method; });
        if (found == methods.end())
            found = methods.insert(found, {call.method, {}});
        found->second.push_back(call.times);
    }
    std::vector<TimeRow> rows;
    for (const auto& [method, times] : methods)
    {
        // A class has several methods; a method's own name stands above the table.
        const std::string label = standin::sameName(method, name) ? "" : method + ", ";
        if (times.size() > few)
            rows.push_back({label + std::to_string(times.size()) + " calls together", sumOf(times)});
        else
            for (std::size_t index = 0; index < times.size(); ++index)
                rows.push_back({label + "call " + std::to_string(index + 1), times[index]});
    }
    return rows;
}

std::string timeText(std::chrono::steady_clock::duration time)
{
    constexpr double microsecondsPerMillisecond = 1000;
    constexpr double coarse = 10; ///< from here on fewer digits say enough
    const double microseconds = std::chrono::duration<double, std::micro>(time).count();
    if (microseconds < 1)
        return "below 1 µs";
    std::ostringstream text;
    text << std::fixed;
    if (microseconds < microsecondsPerMillisecond)
        text << std::setprecision(0) << microseconds << " µs";
    else
    {
        const double milliseconds = microseconds / microsecondsPerMillisecond;
        text << std::setprecision(milliseconds < coarse ? 2 : 1) << milliseconds << " ms";
    }
    return text.str();
}

std::string htmlOf(const DemoPage& page)
{
    data content;
    content.set("photo", page.photo);
    content.set("original", dataOf(page.original));
    content.set("artefact", page.artefact);
    content.set("summary", page.summary);
    content.set("largestWidth", std::to_string(page.largestWidth));
    content.set("version", build::version);
    data families{data::type::list};
    for (const CardFamily& family : page.families)
    {
        data cards{data::type::list};
        for (const Card& card : family.cards)
            cards << dataOf(card);
        data entry;
        entry.set("title", family.title);
        entry.set("anchor", family.cards.empty() ? "" : "with-" + family.cards.front().name);
        entry.set("cards", cards);
        families << entry;
    }
    content.set("families", families);
    content.set("missing", listOf(page.missing));
    content.set("anyMissing", !page.missing.empty());

    kainjow::mustache::mustache pageTemplate{demoTemplate};
    const std::string html = pageTemplate.render(content);
    if (!pageTemplate.is_valid())
        throw standin::Error("the page's template is wrong: " + pageTemplate.error_message());
    return html;
}

} // namespace cli
