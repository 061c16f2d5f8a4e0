/// \file
/// A function that exists outside the plug-in and is found by name at run time.
#pragma once

namespace qvr
{

/// A function looked up by name on first use and cached for the life of the process.
///
/// `Source` says where it comes from: `Source::Name` is the type of a name, `Source::find(name)` gives the
/// address or null. Calling an entry point that cannot be found does nothing and gives a zero value; a failed
/// look-up is tried again at the next use. Arguments and result are those of the C signature.
template <class Source, class Signature>
class EntryPoint;

template <class Source, class Result, class... Arguments>
class EntryPoint<Source, Result(Arguments...)>
{
public:
    constexpr explicit EntryPoint(typename Source::Name functionName) : name(functionName)
    {
    }

    /// Whether the function can be had; looks it up unless it is known already.
    bool available()
    {
        if (address == nullptr)
            address = reinterpret_cast<Function>(Source::find(name));
        return address != nullptr;
    }

    Result operator()(Arguments... arguments)
    {
        return available() ? address(arguments...) : Result();
    }

private:
    using Function = Result (*)(Arguments...);

    typename Source::Name name;
    Function address = nullptr;
};

} // namespace qvr
