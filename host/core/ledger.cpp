#include "host/core/ledger.h"

namespace standin
{

std::string Ledger::describe() const
{
    std::string text;
    const auto add = [&text](const std::string& item) { text += (text.empty() ? "" : "; ") + item; };
    for (const std::string& fault : faults)
        add(fault);
    for (const std::string& item : outstanding)
        add(item);
    return text.empty() ? "balanced" : text;
}

} // namespace standin
