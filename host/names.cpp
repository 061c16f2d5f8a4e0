#include "host/names.h"

#include <algorithm>
#include <cctype>

namespace standin
{

bool sameName(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char left, unsigned char right) {
        return std::tolower(left) == std::tolower(right);
    });
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

} // namespace standin
