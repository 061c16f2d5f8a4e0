/// \file
/// What a stand-in host is to be like.
#pragma once

#include "host/names.h"
#include "host/values/storage.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace standin
{

class Faults;

/// Which build of the plug-in to load.
enum class Artefact
{
    MacBundle,   ///< i386 Mach-O bundle, mapped by the host's own loader
    SharedObject ///< i386 ELF shared object
};

constexpr std::string_view nameOf(Artefact artefact)
{
    switch (artefact)
    {
    case Artefact::MacBundle:
        return "mac";
    case Artefact::SharedObject:
        return "linux";
    }
    return {};
}

/// The file that `artefact` is loaded from when no path is given: PictureQVR.so or PictureQVR.bundle beside
/// the running executable or where it is installed or built with it. Beside it where there is none.
std::string defaultPluginPath(Artefact artefact);

/// What kind of application the host runs, which decides on the class that it has.
enum class Kind
{
    Desktop, ///< "Application"
    Console, ///< "ConsoleApplication"
    Web,     ///< "WebApplication"
    Unknown  ///< none of them
};

constexpr std::string_view nameOf(Kind kind)
{
    switch (kind)
    {
    case Kind::Desktop:
        return "desktop";
    case Kind::Console:
        return "console";
    case Kind::Web:
        return "web";
    case Kind::Unknown:
        return "unknown";
    }
    return {};
}

/// How picture memory is laid out.
enum class Memory
{
    Guarded, ///< guard pages around pixels, rows, blocks and the plug-in's heap; for tests
    Plain,   ///< ordinary memory, rows one after the other
    Pooled   ///< as Plain, but a freed picture's memory serves the next one of its size, unfilled; for
             ///< benchmarks
};

struct Options
{
    Artefact artefact = Artefact::SharedObject;
    Kind kind = Kind::Desktop;
    double version = 2013.03;
    /// The file to load; empty: the one that `defaultPluginPath` finds. A folder "X.bundle" is taken too.
    std::string plugin;
    /// Takes the copy of the plug-in that an earlier host with this switch has left, if there is one, with
    /// its variables as they were when it had just been loaded. Loading takes far longer than anything else.
    bool reuse = false;
    /// Storage of the pictures that the plug-in makes, and of `newPicture` without storage; nothing: GWorld32
    /// on the desktop and where the kind is unknown, Bitmap else.
    std::optional<Storage> newPictureStorage;
    /// Which of them that is.
    Storage storageOfNewPictures() const;

    Memory memory = Memory::Guarded;
    /// Bytes behind each row, filled with a canary. 0 makes the last row of a GWorld end at the guard page.
    /// Rows of a Bitmap lie apart: behind each are `padding % 4` bytes, so that they may begin anywhere.
    int padding = 12;
    /// Where there are some, every picture takes one of these or `padding`, in an irregular order that is the
    /// same in every run.
    std::vector<int> furtherPaddings;
    /// Every byte of a new picture's pixels, so that what stays unwritten shows.
    std::uint8_t freshFill = 0xFF;
    /// By how many bytes the stack misses an alignment to 16 whenever the plug-in is called: 0, 4, 8 or 12.
    /// Linux hosts of the plug-in's age promise an alignment to 4 only.
    int stackSkew = 0;
    /// Host functions, methods loaded by declaration (by method name, such as "DrawPicture") and QuickDraw
    /// functions that do not exist.
    std::set<std::string> absent;
    /// Classes that "PluginNewInstance" cannot make.
    std::set<std::string> notInstantiable;
    /// Keeps `callLog`.
    bool logCalls = true;
    /// Runs before the plug-in's entry point, to plan failures while it is being loaded.
    std::function<void(Faults&)> beforeEntry;
};

} // namespace standin
