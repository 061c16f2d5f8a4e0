#include "script/interpreter.h"

#include "host/calls/overloads.h"
#include "host/names.h"
#include "script/builtins.h"
#include "script/files.h"

#include <algorithm>
#include <deque>
#include <new>

namespace script
{

using standin::ArgumentForm;
using standin::Error;
using standin::Picture;
using standin::RegisteredMethod;
using standin::sameName;
using standin::suggestionFor;
using standin::Type;

namespace
{

using Overloads = std::vector<const RegisteredMethod*>;

/// The variable's type for what a byref parameter declares.
VariableType variableTypeOf(Type type)
{
    for (const Kind kind : {Kind::Integer, Kind::UInt32, Kind::Double, Kind::Boolean, Kind::String,
                            Kind::Colour, Kind::Picture, Kind::MemoryBlock})
        if (declaredType(kind) == type)
            return {kind, {}};
    throw Error("no variable has the type " + std::string(nameOf(type)));
}

/// What is passed for a parameter, before it is known which overload takes it.
struct Argument
{
    Place place;
    Value value;
    Variable* variable = nullptr;      ///< where it is one
    const std::string* word = nullptr; ///< the name of a variable that a call on the command line makes
};

ArgumentForm formOf(const Value& value)
{
    if (std::holds_alternative<FileName>(value))
        return standin::formOfObject();
    // An empty string may be none of the host's objects.
    if (std::holds_alternative<standin::String>(value))
        return {{Type::String}};
    if (std::holds_alternative<standin::Instance>(value) || std::holds_alternative<File>(value) ||
        std::holds_alternative<Surface>(value))
        return {};
    return standin::formOf(toHost(value));
}

ArgumentForm formOf(const Argument& argument, bool byReference)
{
    if (argument.word != nullptr)
        return standin::formOfNewVariable();
    ArgumentForm form = formOf(argument.value);
    if (argument.variable != nullptr && std::holds_alternative<std::nullptr_t>(argument.value))
    {
        const std::optional<Type> type = declaredType(argument.variable->type.kind);
        form.asItIs = type ? std::vector<Type>{*type} : std::vector<Type>();
    }
    form.byReference = byReference || argument.variable != nullptr;
    return form;
}

/// The property of a name, or null.
const standin::RegisteredProperty* findProperty(const standin::RegisteredClass& definition,
                                                const std::string& name)
{
    const auto found = std::find_if(definition.properties.begin(), definition.properties.end(),
                                    [&](const auto& property) { return sameName(property.name, name); });
    return found == definition.properties.end() ? nullptr : &*found;
}

Type typeOf(const standin::RegisteredProperty& property)
{
    return standin::parseDeclaration(property.name + " as " + property.type).result;
}

class Interpreter
{
    /// Tells errors of what has no place in the program where they happened.
    template <class Action>
    auto located(Place place, Action action)
    {
        try
        {
            return action();
        }
        catch (const Failure&)
        {
            throw;
        }
        catch (const Error& error)
        {
            throw Failure(program.file, place, error.what());
        }
        catch (const std::bad_alloc&)
        {
            throw Failure(program.file, place, "there is not enough memory");
        }
    }

public:
    Interpreter(const Program& runProgram, standin::Host& standinHost, const Environment& around,
                const CallContext* call)
        : program(runProgram),
          host(standinHost),
          environment(around),
          services{standinHost, around},
          context(call),
          variables(runProgram.variableCount)
    {
        checkNames();
    }

    void run()
    {
        execute(program.block);
    }

    CallOutcome call()
    {
        const Statement& statement = program.block.front();
        if (const auto* assignment = std::get_if<Assignment>(&statement.node))
        {
            assign(*assignment);
            outcome.method = last;
            return std::move(outcome);
        }
        const Expression& expression = std::get<Call>(statement.node).call;
        const Value value = evaluate(expression);
        outcome.result = located(expression.place, [&] { return toHost(value); });
        if (last == nullptr)
            outcome.type = typeOfBuiltIn(value);
        else
        {
            outcome.method = last;
            outcome.name = last->declaration.name;
            outcome.type = last->declaration.result;
        }
        return std::move(outcome);
    }

private:
    enum class Flow
    {
        GoesOn,
        Leaves ///< a loop, as `leaving` says
    };

    [[noreturn]] void fail(Place place, const std::string& text) const
    {
        throw Failure(program.file, place, text);
    }

    /// What is misspelt is told before anything has been done.
    void checkNames()
    {
        for (const NamedPlace& type : program.classNames)
            located(type.place, [&] { return typeNamed(host.registered(), type.name); });
        if (context != nullptr)
            return;
        for (const NamedPlace& name : program.freeNames)
            if (!isFunction(name.name) && !hasClassMembers(name.name) &&
                host.registered().globalMethods(name.name).empty())
                fail(name.place, "expected a variable, a function or a method, \"" + name.name +
                                     "\" is none of them" + suggestionFor(name.name, valueNames()));
    }

    void step(Place place)
    {
        if (environment.steps != 0 && ++steps > environment.steps)
            fail(place, "stopped after " + std::to_string(environment.steps) + " steps");
    }

    // Statements

    Flow execute(const Block& block)
    {
        for (const Statement& statement : block)
        {
            step(statement.place);
            if (execute(statement) == Flow::Leaves)
                return Flow::Leaves;
        }
        return Flow::GoesOn;
    }

    Flow execute(const Statement& statement)
    {
        return std::visit(Overloaded{
                              [&](const Dim& dim) {
                                  declare(dim);
                                  return Flow::GoesOn;
                              },
                              [&](const Assignment& assignment) {
                                  assign(assignment);
                                  return Flow::GoesOn;
                              },
                              [&](const Call& call) {
                                  evaluate(call.call);
                                  return Flow::GoesOn;
                              },
                              [&](const Print& print) {
                                  const Value value = evaluate(print.value);
                                  located(print.value.place, [&] { environment.print(shown(value)); });
                                  return Flow::GoesOn;
                              },
                              [&](const If& node) { return execute(node); },
                              [&](const For& loop) { return execute(loop, statement.place); },
                              [&](const Loop& loop) { return execute(loop, statement.place); },
                              [&](const Leave& leave) {
                                  leaving = leave;
                                  return Flow::Leaves;
                              },
                          },
                          statement.node);
    }

    void declare(const Dim& dim)
    {
        const VariableType type =
            located(dim.type.place, [&] { return typeNamed(host.registered(), dim.type.name); });
        for (const std::size_t number : dim.variables)
        {
            Value value = initialValue(type);
            if (dim.makesNew)
                value = made(dim.type.place, type, dim.arguments);
            else if (dim.initial)
            {
                const Value initial = evaluate(*dim.initial);
                value = located(dim.initial->place, [&] { return converted(initial, type); });
            }
            variables[number] = {type, std::move(value)};
        }
    }

    void assign(const Assignment& assignment)
    {
        const Value value = evaluate(assignment.value);
        const Expression& target = assignment.target;
        if (const auto* path = std::get_if<Path>(&target.node))
        {
            const Value object = reached(*path, path->members.size() - 1);
            const Member& member = path->members.back();
            assignMember(object, member.place, member.name, member.arguments, value, assignment.value.place);
            return;
        }
        const auto& name = std::get<Name>(target.node);
        if (!name.variable)
        {
            if (context == nullptr || context->receiver.index() == 0)
                fail(target.place, name.name + " cannot be assigned to");
            assignMember(context->receiver, target.place, name.name, name.arguments, value,
                         assignment.value.place);
            return;
        }
        expectNoArguments(target.place, name);
        Variable& variable = variables[*name.variable];
        variable.value = located(assignment.value.place, [&] { return converted(value, variable.type); });
    }

    bool holds(const Expression& condition)
    {
        const Value value = evaluate(condition);
        return located(condition.place, [&] { return booleanOf(value); });
    }

    Flow execute(const If& node)
    {
        for (const If::Branch& branch : node.branches)
            if (holds(branch.condition))
                return execute(branch.block);
        return execute(node.otherwise);
    }

    /// Whether a loop ends that its block has left so.
    bool ends(LoopKind kind, Flow& flow)
    {
        if (flow == Flow::GoesOn)
            return false;
        if (leaving.kind != LoopKind::Any && leaving.kind != kind)
            return true;
        flow = Flow::GoesOn;
        return !leaving.repeats;
    }

    Flow execute(const Loop& loop, Place place)
    {
        const LoopKind kind = loop.isWhile ? LoopKind::While : LoopKind::Do;
        while (true)
        {
            step(place);
            if (loop.before && !holds(*loop.before))
                return Flow::GoesOn;
            if (loop.until && holds(*loop.until))
                return Flow::GoesOn;
            Flow flow = execute(loop.block);
            if (ends(kind, flow))
                return flow;
            if (loop.after && holds(*loop.after))
                return Flow::GoesOn;
        }
    }

    Flow execute(const For& loop, Place place)
    {
        if (loop.type)
        {
            const VariableType type =
                located(loop.type->place, [&] { return typeNamed(host.registered(), loop.type->name); });
            variables[loop.variable] = {type, initialValue(type)};
        }
        const VariableType type = variables[loop.variable].type;
        const auto bound = [&](const Expression& expression) {
            const Value value = evaluate(expression);
            return located(expression.place, [&] {
                numberOf(value);
                return converted(value, type);
            });
        };
        Value current = bound(loop.first);
        const double end = numberOf(bound(loop.last));
        const Value width = loop.step ? bound(*loop.step) : converted(1, type);
        const bool down = loop.down != (numberOf(width) < 0);
        while (true)
        {
            variables[loop.variable].value = current;
            step(place);
            const double number = numberOf(current);
            if (down ? number < end : number > end)
                return Flow::GoesOn;
            Flow flow = execute(loop.block);
            if (ends(LoopKind::For, flow))
                return flow;
            const Value& reachedValue = variables[loop.variable].value;
            const Value next =
                applied(host, loop.down ? Operator::Minus : Operator::Plus, reachedValue, width);
            // Where integers wrap around, the end has been passed.
            if (numberOf(width) != 0 && down != (numberOf(next) < numberOf(reachedValue)))
                return Flow::GoesOn;
            current = converted(next, type);
        }
    }

    // Expressions

    Value evaluate(const Expression& expression)
    {
        return std::visit(Overloaded{
                              [&](const Literal& literal) { return valueOf(literal); },
                              [&](const FileName& file) -> Value { return file; },
                              [&](const Name& name) { return valueOf(name, expression.place); },
                              [&](const NewObject& node) {
                                  const VariableType type = typeNamed(host.registered(), node.className);
                                  return made(expression.place, type, node.arguments);
                              },
                              [&](const Path& path) { return reached(path, path.members.size()); },
                              [&](const Unary& unary) {
                                  const Value operand = evaluate(*unary.operand);
                                  return located(expression.place,
                                                 [&] { return applied(unary.operation, operand); });
                              },
                              [&](const Chain& chain) { return valueOf(chain); },
                          },
                          expression.node);
    }

    Value valueOf(const Literal& literal)
    {
        return std::visit(
            [&](const auto& content) -> Value {
                if constexpr (std::is_same_v<std::decay_t<decltype(content)>, std::string>)
                    return host.newString(content);
                else
                    return content;
            },
            literal.value);
    }

    Value valueOf(const Chain& chain)
    {
        Value value = evaluate(*chain.first);
        for (const Chain::Link& link : chain.links)
        {
            // What decides alone leaves the rest alone.
            if (const auto* known = std::get_if<bool>(&value))
                if (link.operation == (*known ? Operator::Or : Operator::And))
                    continue;
            const Value operand = evaluate(*link.operand);
            value = located(link.place, [&] {
                checkSum(value, operand);
                return applied(host, link.operation, value, operand);
            });
        }
        return value;
    }

    /// Texts can double and double again.
    void checkSum(const Value& left, const Value& right) const
    {
        if (std::holds_alternative<standin::String>(left) && std::holds_alternative<standin::String>(right))
            checkSize(services, std::uint64_t{textOf(left).size()} + textOf(right).size());
    }

    void expectNoArguments(Place place, const Name& name) const
    {
        if (!name.arguments.empty())
            fail(place, "expected no arguments, " + name.name + " is a variable");
    }

    /// Notes what gives the value that comes next; the plug-in's methods note themselves.
    void gives(const std::string& name)
    {
        last = nullptr;
        outcome.name = name;
    }

    Value valueOf(const Name& name, Place place)
    {
        gives(name.name);
        if (name.variable)
        {
            expectNoArguments(place, name);
            return variables[*name.variable].value;
        }
        if (context != nullptr)
        {
            if (sameName(name.name, context->receiverName) && name.arguments.empty())
                return context->receiver;
            if (receiverHas(name.name))
                return memberOf(context->receiver, place, name.name, name.arguments);
        }
        if (isFunction(name.name))
        {
            const Values arguments = values(name.arguments);
            gives(name.name);
            return located(place, [&] { return callFunction(services, name.name, arguments); });
        }
        const Overloads overloads = host.registered().globalMethods(name.name);
        if (overloads.empty())
            fail(place, (context != nullptr && name.arguments.empty() ? "\"" + name.name + "\" is no value"
                                                                      : "there is no method " + name.name) +
                            suggestionFor(name.name, valueNames()));
        return located(place,
                       [&] { return callPlugin(overloads, name.name, nullptr, name.arguments, nullptr); });
    }

    bool receiverHas(const std::string& name) const
    {
        if (std::holds_alternative<Picture>(context->receiver))
            return isPictureMember(host.registered(), name);
        if (const auto* instance = std::get_if<standin::Instance>(&context->receiver))
            return !standin::methodsNamed(instance->definition().methods, name).empty() ||
                   findProperty(instance->definition(), name) != nullptr;
        return false;
    }

    Value made(Place place, const VariableType& type, const Arguments& arguments)
    {
        const Values given = values(arguments);
        return located(place, [&] { return newObject(services, type, given); });
    }

    Values values(const Arguments& arguments)
    {
        Values result;
        for (const Expression& argument : arguments)
            result.push_back(evaluate(argument));
        return result;
    }

    /// What the first so many members of a path lead to.
    Value reached(const Path& path, std::size_t count)
    {
        std::size_t index = 0;
        Value value;
        const auto* name = std::get_if<Name>(&path.base->node);
        if (name != nullptr && !name->variable && name->arguments.empty() && hasClassMembers(name->name) &&
            (context == nullptr || !sameName(name->name, context->receiverName)))
        {
            const Member& first = path.members.front();
            const Values arguments = values(first.arguments);
            gives(first.name);
            value = located(first.place,
                            [&] { return classMember(services, name->name, first.name, arguments); });
            index = 1;
        }
        else
            value = evaluate(*path.base);
        for (; index < count; ++index)
        {
            const Member& member = path.members[index];
            value = memberOf(value, member.place, member.name, member.arguments);
        }
        return value;
    }

    /// `what` is that it has not.
    [[noreturn]] void failMember(Place place, const Value& object, const std::string& name,
                                 const std::string& what) const
    {
        if (std::holds_alternative<std::nullptr_t>(object))
            fail(place, "NilObjectException: Nil has no " + what);
        fail(place, typeNameOf(object) + " has no " + what + suggestionFor(name, memberNames(object)));
    }

    /// What can stand where a value is wanted.
    std::vector<std::string> valueNames() const
    {
        std::vector<std::string> names = functionNames();
        addNames(names, host.registered().globals);
        if (context != nullptr)
        {
            names.push_back(context->receiverName);
            for (std::string& name : memberNames(context->receiver))
                names.push_back(std::move(name));
        }
        return names;
    }

    std::vector<std::string> memberNames(const Value& object) const
    {
        std::vector<std::string> names = ownMemberNames(object);
        if (std::holds_alternative<Picture>(object))
            for (const standin::RegisteredClass& extension : host.registered().extensions)
                addNames(names, extension.methods);
        if (const auto* instance = std::get_if<standin::Instance>(&object))
        {
            addNames(names, instance->definition().methods);
            for (const standin::RegisteredProperty& property : instance->definition().properties)
                names.push_back(property.name);
        }
        return names;
    }

    static void addNames(std::vector<std::string>& names, const std::vector<RegisteredMethod>& methods)
    {
        for (const RegisteredMethod& method : methods)
            names.push_back(method.declaration.name);
    }

    Value memberOf(const Value& object, Place place, const std::string& name, const Arguments& arguments)
    {
        const Overloads overloads = methodsOf(object, name);
        if (!overloads.empty())
            return located(place, [&] { return callPlugin(overloads, name, &object, arguments, nullptr); });
        const Values given = values(arguments);
        gives(name);
        if (const auto* instance = std::get_if<standin::Instance>(&object))
            if (const auto* property = findProperty(instance->definition(), name))
            {
                expectNoArguments(place, property->name, arguments);
                return located(place, [&] {
                    return fromHost(checked(instance->get(property->name)), typeOf(*property));
                });
            }
        const std::optional<Value> value =
            located(place, [&] { return script::member(services, object, name, given); });
        if (!value)
            failMember(place, object, name, name);
        return *value;
    }

    void expectNoArguments(Place place, const std::string& name, const Arguments& arguments) const
    {
        if (!arguments.empty())
            fail(place, name + " takes no arguments");
    }

    void assignMember(const Value& object, Place place, const std::string& name, const Arguments& arguments,
                      const Value& value, Place valuePlace)
    {
        const Overloads overloads = methodsOf(object, name);
        if (!overloads.empty())
        {
            located(place, [&] { return callPlugin(overloads, name, &object, arguments, &value); });
            return;
        }
        if (const auto* instance = std::get_if<standin::Instance>(&object))
        {
            const auto* property = findProperty(instance->definition(), name);
            if (property == nullptr)
                failMember(place, object, name, "property " + name);
            expectNoArguments(place, property->name, arguments);
            standin::Instance target = *instance;
            located(valuePlace, [&] { target.set(property->name, hostValue(value, typeOf(*property))); });
            return;
        }
        const Values given = values(arguments);
        const bool done = located(place, [&] {
            const bool isFile = std::holds_alternative<FileName>(value);
            return script::assignMember(services, object, name, given,
                                        isFile ? fromHost(hostValue(value, Type::Picture), Type::Picture)
                                               : value);
        });
        if (!done)
            failMember(place, object, name, name + " that can be assigned to");
    }

    // The plug-in

    /// The plug-in's methods of this name for an object. They take nil pictures too.
    Overloads methodsOf(const Value& object, const std::string& name) const
    {
        if (std::holds_alternative<Picture>(object) || std::holds_alternative<std::nullptr_t>(object))
            return host.registered().pictureMethods(name);
        if (const auto* instance = std::get_if<standin::Instance>(&object))
            return standin::methodsNamed(instance->definition().methods, name);
        return {};
    }

    static standin::Value checked(standin::Value result)
    {
        if (const auto& raised = result.exception())
            throw Error(raised->className + (raised->message.empty() ? "" : ": " + raised->message));
        return result;
    }

    standin::Value hostValue(const Value& value, Type type) const
    {
        const auto* file = std::get_if<FileName>(&value);
        if (file == nullptr)
            return toHost(value);
        if (!file->raw)
            return context->read(file->name, type);
        if (type == Type::Picture)
            throw Error("expected a picture; @raw: gives bytes");
        const standin::Value bytes = context->read(file->name, Type::String);
        if (type == Type::String)
            return bytes;
        return host.newMemoryBlock(bytesOf(bytes.string().bytes()));
    }

    std::vector<Argument> argumentsOf(const Arguments& expressions)
    {
        std::vector<Argument> result;
        for (const Expression& expression : expressions)
        {
            Argument& argument = result.emplace_back(Argument{expression.place, nullptr});
            const auto* name = std::get_if<Name>(&expression.node);
            if (name != nullptr && name->variable && name->arguments.empty())
                argument.variable = &variables[*name->variable];
            if (name != nullptr && isNewWord(*name))
                argument.word = &name->name;
            else
                argument.value = evaluate(expression);
        }
        return result;
    }

    /// A bare name that means nothing yet.
    bool isNewWord(const Name& name) const
    {
        return context != nullptr && !name.variable && name.arguments.empty() &&
               !sameName(name.name, context->receiverName) && !receiverHas(name.name) &&
               !isFunction(name.name) && host.registered().globalMethods(name.name).empty();
    }

    /// Variables for the time of a call, which may get the same one twice.
    class Variables
    {
    public:
        standin::VariableArgument add(Variable& variable, Type type)
        {
            for (Entry& entry : entries)
                if (entry.variable == &variable)
                    return standin::byref(entry.value);
            // The object changes sides, so that the plug-in sees as many references as with a host.
            Entry& entry = entries.emplace_back(Entry{&variable, type, toHost(variable.value)});
            variable.value = nullptr;
            return standin::byref(entry.value);
        }

        void writeBack()
        {
            for (Entry& entry : entries)
                entry.variable->value = fromHost(entry.value, entry.type);
        }

    private:
        struct Entry
        {
            Variable* variable;
            Type type;
            standin::Value value;
        };

        std::deque<Entry> entries;
    };

    /// The variable that stands for an argument of a byref parameter.
    Variable& variableFor(const Argument& argument, const standin::Parameter& parameter)
    {
        if (argument.variable != nullptr)
        {
            if (declaredType(argument.variable->type.kind) != parameter.type)
                fail(argument.place, "expected a variable of type " + std::string(nameOf(parameter.type)) +
                                         " for " + parameter.name + ", which is ByRef");
            return *argument.variable;
        }
        const VariableType type = variableTypeOf(parameter.type);
        const Value value = argument.word != nullptr
                                ? initialValue(type)
                                : fromHost(hostValue(argument.value, parameter.type), parameter.type);
        newVariables.push_back({argument.word != nullptr ? *argument.word : parameter.name, {type, value}});
        return newVariables.back().variable;
    }

    const RegisteredMethod& overloadFor(const Overloads& overloads, const std::string& name,
                                        const std::vector<Argument>& arguments) const
    {
        std::vector<ArgumentForm> forms;
        for (const Argument& argument : arguments)
            forms.push_back(formOf(argument, context != nullptr));
        try
        {
            return standin::chooseOverload(overloads, name, forms);
        }
        catch (const standin::ArgumentError& error)
        {
            if (error.argument >= arguments.size())
                throw;
            const Argument& wrong = arguments[error.argument];
            const std::string* word = wrong.word;
            fail(wrong.place,
                 error.what() +
                     (word == nullptr ? "" : ": there is no " + *word + suggestionFor(*word, valueNames())));
        }
    }

    Value callPlugin(const Overloads& overloads, const std::string& name, const Value* self,
                     const Arguments& expressions, const Value* assigned)
    {
        std::vector<Argument> arguments = argumentsOf(expressions);
        const RegisteredMethod& method = overloadFor(overloads, name, arguments);
        const standin::Declaration& declaration = method.declaration;
        if (assigned != nullptr && method.setter == nullptr)
            throw Error(declaration.name + " cannot be assigned to");

        Variables byrefs;
        standin::Arguments passed;
        const std::size_t known = newVariables.size();
        for (std::size_t index = 0; index < arguments.size(); ++index)
        {
            const Argument& argument = arguments[index];
            const standin::Parameter& parameter = declaration.parameters[index];
            if (parameter.byref)
                passed.emplace_back(byrefs.add(variableFor(argument, parameter), parameter.type));
            else
                passed.push_back(
                    located(argument.place, [&] { return hostValue(argument.value, parameter.type); }));
        }
        // The variables are to hold the only references.
        arguments.clear();
        std::optional<standin::Value> passedValue;
        if (assigned != nullptr)
            passedValue = hostValue(*assigned, declaration.result);
        const PluginCall call{method, heldBy<Picture>(self), heldBy<standin::Instance>(self), passed,
                              passedValue ? &*passedValue : nullptr};
        const auto watcher = environment.watch ? environment.watch(call) : nullptr;
        standin::Value result = called(call, self != nullptr);
        if (watcher)
            watcher(result);
        byrefs.writeBack();
        checked(result);
        for (std::size_t index = known; index < newVariables.size(); ++index)
            outcome.variables.push_back(
                {newVariables[index].name, toHost(newVariables[index].variable.value)});
        last = &method;
        return assigned == nullptr ? fromHost(result, declaration.result) : Value(nullptr);
    }

    /// The object in a value, or nil.
    template <class Object>
    static Object heldBy(const Value* value)
    {
        const auto* object = value == nullptr ? nullptr : std::get_if<Object>(value);
        return object == nullptr ? Object() : *object;
    }

    standin::Value called(const PluginCall& call, bool onObject)
    {
        const std::string& name = call.method.declaration.name;
        if (!onObject)
        {
            if (call.assigned != nullptr)
                throw Error(name + " cannot be assigned to");
            return host.callGlobal(name, call.arguments);
        }
        if (!call.instance.isNil())
        {
            standin::Instance target = call.instance;
            return call.assigned != nullptr ? target.assign(name, call.arguments, *call.assigned)
                                            : target.call(name, call.arguments);
        }
        return call.assigned != nullptr ? host.assign(call.picture, name, call.arguments, *call.assigned)
                                        : host.call(call.picture, name, call.arguments);
    }

    static Type typeOfBuiltIn(const Value& value)
    {
        for (const Kind kind : {Kind::Integer, Kind::UInt32, Kind::Double, Kind::Boolean, Kind::String,
                                Kind::Colour, Kind::Picture, Kind::MemoryBlock})
            if (value.index() == initialValue({kind, {}}).index() && value.index() != 0)
                return *declaredType(kind);
        return std::holds_alternative<Picture>(value)                ? Type::Picture
               : std::holds_alternative<standin::MemoryBlock>(value) ? Type::MemoryBlock
                                                                     : Type::Nothing;
    }

    struct NewVariable
    {
        std::string name;
        Variable variable;
    };

    const Program& program;
    standin::Host& host;
    const Environment& environment;
    Services services;
    const CallContext* context; ///< null in programs
    std::vector<Variable> variables;
    std::deque<NewVariable> newVariables;   ///< variables of calls on the command line
    const RegisteredMethod* last = nullptr; ///< what gave the value at hand
    CallOutcome outcome;
    Leave leaving;
    std::uint64_t steps = 0;
};

} // namespace

void run(const Program& program, standin::Host& host, const Environment& environment)
{
    Interpreter(program, host, environment, nullptr).run();
}

CallOutcome call(const Program& program, standin::Host& host, const Environment& environment,
                 const CallContext& context)
{
    try
    {
        return Interpreter(program, host, environment, &context).call();
    }
    catch (const Failure& failure)
    {
        throw CallFailure(failure.text(), program.text, failure.place().column);
    }
}

bool isPictureMember(const standin::Registered& registered, const std::string& name)
{
    return !registered.pictureMethods(name).empty() || isOwnPictureMember(name);
}

} // namespace script
