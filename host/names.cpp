#include "host/names.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <set>
#include <utility>

namespace standin
{

namespace
{

/// How many letters have to be put in, left out, changed or swapped with the next one.
std::size_t distanceBetween(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> current(b.size() + 1);
    std::iota(current.begin(), current.end(), std::size_t{0});
    for (std::size_t row = 1; row <= a.size(); ++row)
    {
        beforeLast.swap(last);
        last.swap(current);
        current[0] = row;
        for (std::size_t column = 1; column <= b.size(); ++column)
        {
            const bool same = a[row - 1] == b[column - 1];
            current[column] =
                std::min({last[column] + 1, current[column - 1] + 1, last[column - 1] + (same ? 0 : 1)});
            if (row > 1 && column > 1 && a[row - 1] == b[column - 2] && a[row - 2] == b[column - 1])
                current[column] = std::min(current[column], beforeLast[column - 2] + 1);
        }
    }
    return current[b.size()];
}

} // namespace

bool sameName(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char left, unsigned char right) {
        return std::tolower(left) == std::tolower(right);
    });
}

std::string lowerCase(std::string_view text)
{
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return result;
}

std::string listed(const std::vector<std::string>& names)
{
    std::string text;
    for (std::size_t index = 0; index < names.size(); ++index)
    {
        if (index > 0)
            text += index + 1 == names.size() ? " or " : ", ";
        text += names[index];
    }
    return text;
}

std::vector<std::string> namesLike(std::string_view name, const std::vector<std::string>& known)
{
    constexpr std::size_t most = 3;
    constexpr std::size_t shortestPart = 3;
    constexpr std::size_t lettersForEachMistake = 3;
    const std::string wanted = lowerCase(name);
    std::set<std::pair<std::size_t, std::string>> found;
    for (const std::string& candidate : known)
    {
        const std::string other = lowerCase(candidate);
        const std::size_t distance = distanceBetween(wanted, other);
        if (wanted.size() >= shortestPart && other.find(wanted) != std::string::npos)
            found.emplace(0, candidate);
        else if (distance <= std::max(wanted.size(), other.size()) / lettersForEachMistake)
            found.emplace(distance, candidate);
    }
    std::vector<std::string> names;
    for (const auto& [distance, candidate] : found)
        if (names.size() < most && distance <= found.begin()->first + 1)
            names.push_back(candidate);
    return names;
}

std::string suggestionFor(std::string_view name, const std::vector<std::string>& known)
{
    const std::vector<std::string> names = namesLike(name, known);
    return names.empty() ? "" : "; did you mean " + listed(names) + "?";
}

} // namespace standin
