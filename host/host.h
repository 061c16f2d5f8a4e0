/// \file
/// The stand-in host: loads one of the plug-in's artefacts and behaves towards it as the real host does, so
/// that tests, command line, benchmarks and fuzzers can call its methods by their declarations.
#pragma once

#include "host/calls/registry.h"
#include "host/core/faults.h"
#include "host/core/ledger.h"
#include "host/error.h"
#include "host/options.h"
#include "host/values/picture.h"
#include "host/values/value.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

/// Switches of the system beside the host.
struct SystemSwitches
{
    bool foldersFound = true;    ///< FSFindFolder succeeds
    bool bundlesCreated = true;  ///< CFBundleCreate succeeds
    bool executablesLoad = true; ///< CFBundleLoadExecutable succeeds
};

/// An instance of a class that the plug-in registered; owns a reference. Its constructor has run; the
/// destructor runs with the last reference. Wrong names, types or argument counts throw Error.
class Instance : public Reference
{
public:
    Instance() = default;
    const RegisteredClass& definition() const;
    /// Properties: fields that the host accesses itself (pictures are counted: setting gives back the old
    /// one), or accessors.
    Value get(std::string_view property) const;
    void set(std::string_view property, const Value& value);
    Value call(std::string_view method, const Arguments& arguments = {});
    /// Writes to an assignable method: `lut.assign("Table", {r, g, b, x}, 3.0)`.
    Value assign(std::string_view method, const Arguments& arguments, const Value& value);
    /// The instance data, `definition().dataSize` bytes.
    std::uint8_t* data();

private:
    friend class Core;
    using Reference::Reference;
};

/// One host process of its own: a fresh copy of the plug-in, pictures, strings, faults and ledger. Several
/// can live at once. Objects keep their host alive. Not for several threads.
class Host
{
public:
    /// Loads the plug-in and runs its entry point. Throws Error when the file is missing, no plug-in for
    /// i386, damaged, or needs functions that do not exist.
    explicit Host(Options options = {});
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// As a fresh host, and much faster: the plug-in's variables get the values again that they had when its
    /// entry point had returned, so it looks everything up anew. What it holds is taken back; logs, planned
    /// failures and the ledger are cleared. What callers hold stays.
    void rewind();

    const Options& options() const;

    /// A new picture, filled with `freshFill`. Sizes the host's own language would refuse (0, or above 32767)
    /// are allowed here. Throws Error when memory runs out.
    Picture newPicture(int width, int height, std::optional<Storage> storage = std::nullopt);
    /// A block of zero bytes.
    MemoryBlock newMemoryBlock(int size);
    MemoryBlock newMemoryBlock(std::span<const std::uint8_t> bytes);
    String newString(std::string bytes, std::uint32_t encoding = encodingUtf8);
    Instance newInstance(std::string_view className);

    /// Calls a method that the plug-in added to "Picture". The overload is chosen by count and types of the
    /// arguments, defaults are filled in, names ignore case. Picture and block results own their reference.
    /// Throws Error for an unknown name or unfitting arguments, naming what would fit. A nil picture is
    /// passed on as it is.
    Value call(const Picture& picture, std::string_view method, const Arguments& arguments = {});
    /// Writes to an assignable method: `host.assign(photo, "EmbeddedMaskQVR", {true}, mask)`.
    Value assign(const Picture& picture, std::string_view method, const Arguments& arguments,
                 const Value& value);
    Value callGlobal(std::string_view method, const Arguments& arguments = {});

    /// What the plug-in has registered.
    const Registered& registered() const;
    /// Looks at all objects now.
    Ledger ledger() const;
    Faults& faults();
    SystemSwitches& system();
    /// The quirks that pictures made by the plug-in get.
    PictureQuirks& newPictureQuirks();
    /// Lets a function exist or not, as `Options::absent` does. The plug-in keeps what it has found, so only
    /// names not yet used can vanish.
    void setAbsent(const std::string& name, bool absent = true);

    /// The calls of the plug-in so far, in order: host, system and QuickDraw functions, malloc, calloc and
    /// free, as "newPicture(640, 480, 32)" or "REALUnlockObject(picture#2)". Look-ups by the resolver are not
    /// in it.
    const std::vector<std::string>& callLog() const;
    void clearCallLog();
    /// Every function that the plug-in asked for (the resolver, by declaration, of the framework), in the
    /// order of the first time.
    const std::vector<std::string>& lookups() const;
    /// Whether the host had nothing under that name when it was asked.
    bool lacks(const std::string& name) const;
    /// How often it asked for that one.
    int lookups(const std::string& name) const;
    /// A 32-bit variable of the plug-in's own by its C name, for switches that only tests turn; null when its
    /// symbol table has none of that name.
    std::int32_t* pluginVariable(const std::string& name);

private:
    std::shared_ptr<Core> core;
};

} // namespace standin
