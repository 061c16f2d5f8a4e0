#include "host/options.h"

#include <filesystem>

namespace standin
{

std::string defaultPluginPath(Artefact artefact)
{
    const std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    if (artefact == Artefact::SharedObject)
        return folder / "PictureQVR.so";
    return folder.parent_path() / "macos-i386/PictureQVR.bundle/Contents/MacOS/PictureQVR";
}

Storage Options::storageOfNewPictures() const
{
    const bool desktop = kind == Kind::Desktop || kind == Kind::Unknown;
    return newPictureStorage.value_or(desktop ? Storage::GWorld32 : Storage::Bitmap);
}

} // namespace standin
