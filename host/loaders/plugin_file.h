#pragma once

#include "host/options.h"

#include <cstddef>
#include <string>
#include <vector>

namespace standin
{

/// What a plug-in's file says of itself; nothing of it is loaded.
struct PluginFile
{
    std::string path; ///< of the machine code: for a bundle's folder the file in it
    Artefact artefact = Artefact::SharedObject;
    std::size_t size = 0;
    std::vector<std::string> exports; ///< by their C names, sorted
    std::vector<std::string> imports; ///< likewise; those of shared objects that must be there
};

/// The file of machine code that a path means: "X.bundle/Contents/MacOS/X" for the folder "X.bundle".
std::string machineCodeOf(const std::string& path);

/// What a file is, by its first bytes; what is no ELF file is left to the bundle's loader to judge.
Artefact artefactOf(const std::string& path);

/// Throws Error when the file is missing, no plug-in for i386, or damaged.
PluginFile readPluginFile(const std::string& path);

} // namespace standin
