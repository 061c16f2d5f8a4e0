#include "cli/call_text.h"

namespace cli
{

namespace
{

Term readTerm(standin::Scanner& scanner)
{
    if (scanner.peek() == '"')
        return scanner.quoted();
    if (scanner.take('@'))
        return FileName{scanner.peek() == '"' ? scanner.quoted() : scanner.upTo(",()", "a file name")};
    if (const auto literal = scanner.literal())
        return *literal;
    return VariableName{scanner.word("a value")};
}

} // namespace

CallText parseCall(std::string_view text)
{
    standin::Scanner scanner("call", text);
    CallText call;
    call.name = scanner.word("a method's name");
    if (scanner.take('('))
        scanner.list([&] { call.arguments.push_back(readTerm(scanner)); });
    if (scanner.take('='))
        call.assigned = readTerm(scanner);
    scanner.expectEnd();
    return call;
}

} // namespace cli
