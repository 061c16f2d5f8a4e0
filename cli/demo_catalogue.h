/// \file
/// What the demo shows: the examples, in the families and the order of the reference.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace cli
{

struct Family
{
    std::string title;
    std::vector<std::string> names; ///< of methods and classes
};

/// The families in the reference's table of contents: rows such as "| [Masks](masks.md) | `HasMaskQVR` |".
/// `source` is a project's folder; where it is empty, they are those that the program was built with.
/// Throws standin::Error where there are none.
std::vector<Family> readFamilies(const std::filesystem::path& source);

/// The program of a method or class, as readers are shown it.
struct Example
{
    std::string file;
    std::string text;
    std::string shows; ///< what its first line says
    std::string code;  ///< without that line, and without those that say what is printed
};

/// Read from a project's folder, or from the program itself likewise. Throws standin::Error for a file that
/// cannot be read, or does not say what it shows.
Example readExample(const std::filesystem::path& source, const std::string& name);

} // namespace cli
