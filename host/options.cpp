#include "host/options.h"

#include <filesystem>

namespace standin
{

std::string defaultPluginPath(Artefact artefact)
{
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const std::filesystem::path file =
        artefact == Artefact::SharedObject ? "PictureQVR.so" : "PictureQVR.bundle/Contents/MacOS/PictureQVR";
    // Beside it, as installed, at the top of an archive, and where the bundle is built.
    for (const char* place : {".", "../lib/pictureqvr", "..", "../macos-i386"})
    {
        const std::filesystem::path path = (program / place / file).lexically_normal();
        if (std::filesystem::exists(path))
            return path;
    }
    return program / file;
}

Storage Options::storageOfNewPictures() const
{
    const bool desktop = kind == Kind::Desktop || kind == Kind::Unknown;
    return newPictureStorage.value_or(desktop ? Storage::GWorld32 : Storage::Bitmap);
}

} // namespace standin
