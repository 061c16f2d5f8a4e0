#include "system/quickdraw.h"

#include "system/carbon.h"

namespace qvr::frameworks
{

namespace
{

/// kOnAppropriateDisk: for a folder of the system, the volume that it was started from.
constexpr int16_t systemDisk = -32767;
/// kFrameworksFolderType, the four characters 'fram'.
constexpr OSType frameworksFolder = 0x6672616D;

/// Owns one reference to a CoreFoundation object and gives it back.
class CoreFoundationReference
{
public:
    explicit CoreFoundationReference(CFTypeRef owned) : object(owned)
    {
    }
    ~CoreFoundationReference()
    {
        if (object != nullptr)
            carbon::CFRelease(object);
    }
    CoreFoundationReference(const CoreFoundationReference&) = delete;
    CoreFoundationReference& operator=(const CoreFoundationReference&) = delete;

private:
    CFTypeRef object;
};

CFBundleRef ApplicationServicesFramework = nullptr;

CFStringRef constantString(CFTypeRef untyped)
{
    return static_cast<CFStringRef>(untyped);
}

} // namespace

} // namespace qvr::frameworks

namespace qvr
{

constinit QuickDrawFunctions quickDraw;

CFBundleRef LoadFrameworkBundle(CFStringRef name)
{
    constexpr Boolean createFolder = 1;
    constexpr Boolean isDirectory = 1;

    FSRef folder{};
    if (!carbon::available() || carbon::FSFindFolder(frameworks::systemDisk, frameworks::frameworksFolder,
                                                     createFolder, &folder) != 0)
        return nullptr;
    CFURLRef folderURL = carbon::CFURLCreateFromFSRef(nullptr, &folder);
    if (folderURL == nullptr)
        return nullptr;
    const frameworks::CoreFoundationReference releaseFolder{folderURL};
    CFURLRef frameworkURL =
        carbon::CFURLCreateCopyAppendingPathComponent(nullptr, folderURL, name, isDirectory);
    if (frameworkURL == nullptr)
        return nullptr;
    const frameworks::CoreFoundationReference releaseFramework{frameworkURL};
    CFBundleRef bundle = carbon::CFBundleCreate(nullptr, frameworkURL);
    if (bundle == nullptr)
        return nullptr;
    if (carbon::CFBundleLoadExecutable(bundle) == 0)
    {
        carbon::CFRelease(bundle);
        return nullptr;
    }
    return bundle;
}

void* ApplicationServices::find(Name name)
{
    if (frameworks::ApplicationServicesFramework == nullptr)
        frameworks::ApplicationServicesFramework =
            LoadFrameworkBundle(frameworks::constantString(QVR_CFSTRING("ApplicationServices.framework")));
    if (frameworks::ApplicationServicesFramework == nullptr)
        return nullptr;
    return carbon::CFBundleGetFunctionPointerForName(frameworks::ApplicationServicesFramework,
                                                     frameworks::constantString(name));
}

} // namespace qvr
