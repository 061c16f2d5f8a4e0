#include "editor/picture_editor.h"

#include "system/c_library.h"
#include "system/quickdraw.h"

namespace qvr
{

bool IsDesktop = false;
bool IsConsole = false;

} // namespace qvr

namespace qvr::pictureEditor
{

namespace
{

/// Hosts before this version want an unlock after a failed lock of a memory bitmap too, and are asked for
/// their own drawing function.
constexpr double firstNewerHostVersion = 2012.0;

/// Finds out whether the host is a desktop or a console (or web) application; it may be neither.
void detectHostKind()
{
    if (IsDesktop || IsConsole)
        return;
    const bool application = host.REALGetClassRef("Application") != nullptr;
    const bool webApplication = host.REALGetClassRef("WebApplication") != nullptr;
    const bool consoleApplication = host.REALGetClassRef("ConsoleApplication") != nullptr;
    if (application)
        IsDesktop = true;
    else if (consoleApplication || webApplication)
        IsConsole = true;
}

/// Locks a picture as a bitmap in memory. After a failure nothing is left to unlock.
bool lockBitmapDescription(REALpictureStruct* picture, REALpictureDescription* description)
{
    if (host.REALLockPictureDescription(picture, description, pictureMemoryBitmap))
        return true;
    if (hostVersion < firstNewerHostVersion)
        host.unlockPictureDescription(picture);
    return false;
}

/// Word `index` of a host memory bitmap.
uintptr_t bitmapWord(const REALpictureDescription& description, int32_t index)
{
    return static_cast<const uintptr_t*>(description.data)[index];
}

uint8_t** bitmapRowTable(const REALpictureDescription& description)
{
    return reinterpret_cast<uint8_t**>(bitmapWord(description, bitmapRowTableWord));
}

bool isUsableBitmap(const REALpictureDescription& description)
{
    return description.type == pictureMemoryBitmap && description.data != nullptr &&
           bitmapWord(description, bitmapKindWord) == 0 && bitmapWord(description, bitmapPresentWord) != 0 &&
           bitmapRowTable(description) != nullptr;
}

bool bitmapsHaveSameSize(const REALpictureDescription& first, const REALpictureDescription& second)
{
    return bitmapWord(first, bitmapKindWord) == 0 && bitmapWord(second, bitmapKindWord) == 0 &&
           bitmapWord(first, bitmapWidthWord) == bitmapWord(second, bitmapWidthWord) &&
           bitmapWord(first, bitmapHeightWord) == bitmapWord(second, bitmapHeightWord) &&
           bitmapRowTable(first) != nullptr && bitmapRowTable(second) != nullptr;
}

/// Copies the rows of one locked bitmap to another; bitmaps of different kinds or sizes are left alone.
void copyBitmapRows(const REALpictureDescription& from, const REALpictureDescription& to)
{
    if (from.data == nullptr || to.data == nullptr || !bitmapsHaveSameSize(from, to))
        return;
    const auto rowLength = bitmapWord(from, bitmapWidthWord) * 4;
    const auto rows = static_cast<int32_t>(bitmapWord(from, bitmapHeightWord));
    for (int32_t row = 0; row < rows; ++row)
        libc::memcpy(bitmapRowTable(to)[row], bitmapRowTable(from)[row], rowLength);
}

} // namespace

} // namespace qvr::pictureEditor

namespace qvr
{

PictureEditor::~PictureEditor()
{
    clear();
}

PictureReader::~PictureReader()
{
    clear();
}

PictureWriter::~PictureWriter()
{
    clear();
}

void PictureEditor::operator delete(void* block)
{
    libc::free(block);
}

void PictureEditor::clear()
{
    scratch = 0;
    if (pixMap != nullptr)
    {
        quickDraw.UnlockPixels(pixMap);
        pixMap = nullptr;
    }
    if (descriptionLocked)
    {
        if (picture != nullptr)
            host.unlockPictureDescription(picture);
        descriptionLocked = false;
    }
    if (picture == nullptr)
        return;
    if (writeAccess)
        host.REALPictureClearCache(picture);
    host.REALUnlockObject(picture);
    picture = nullptr;
}

void PictureEditor::hold(REALpictureStruct* source)
{
    REALpictureStruct* const before = picture;
    picture = Reference<REALpictureStruct>::retain(source);
    if (before != nullptr)
        host.REALUnlockObject(before);
    descriptionLocked = true;
    x = 0;
    y = 0;
}

bool PictureEditor::GetPictureEditor(REALpictureStruct* source, bool read, bool write)
{
    return lockPicture(source, read, write, read && !write);
}

/// `copyAllowed` says whether a picture that cannot be locked may be drawn into a copy. The copy itself is
/// not copied again: on a host whose new pictures cannot be locked that would never end.
bool PictureEditor::lockPicture(REALpictureStruct* source, bool read, bool write, bool copyAllowed)
{
    clear();
    if (source == nullptr)
        return false;
    writeAccess = write;
    readAccess = read;
    scratch = 0;

    pictureEditor::detectHostKind();
    if (!IsConsole)
    {
        description = {};
        host.lockPictureDescription(source, &description);
        if (description.type == pictureGWorldPtr)
        {
            IsDesktop = true;
            return lockGWorld(source, copyAllowed);
        }
        // The description is left locked here: the host's own bookkeeping expects no unlock for these
        // pictures.
        if (copyAllowed)
        {
            const int32_t copyWidth = REALGetPropValueInt32(source, "Width");
            const int32_t copyHeight = REALGetPropValueInt32(source, "Height");
            if (REALpictureStruct* copy = drawCopy(source, copyWidth, copyHeight))
                return lockCopy(copy, read);
        }
    }
    return lockMemoryBitmap(source);
}

bool PictureEditor::lockGWorld(REALpictureStruct* source, bool copyAllowed)
{
    const auto fail = [this, source] {
        pixMap = nullptr;
        rowPointer = nullptr;
        host.unlockPictureDescription(source);
        return false;
    };

    auto* const gWorld = static_cast<GWorldPtr>(description.data);
    if (gWorld == nullptr)
        return fail();
    PixMapHandle const map = quickDraw.GetGWorldPixMap(gWorld);
    if (map == nullptr)
        return fail();

    switch (quickDraw.GetPixDepth(map))
    {
    case 32:
        pixelFormat = PixelFormatARGB32;
        bytesPerPixel = 4;
        break;
    case 24:
        pixelFormat = PixelFormatRGB24;
        bytesPerPixel = 3;
        break;
    default:
    {
        const int32_t copyWidth = description.width;
        const int32_t copyHeight = description.height;
        const bool readOnly = readAccess;
        fail();
        if (!copyAllowed)
            return false;
        REALpictureStruct* copy = drawCopy(source, copyWidth, copyHeight);
        return copy != nullptr && lockCopy(copy, readOnly);
    }
    }

    if (quickDraw.LockPixels(map) == 0)
        return fail();
    baseAddress = rowPointer = quickDraw.GetPixBaseAddr(map);
    if (baseAddress == nullptr)
    {
        quickDraw.UnlockPixels(map);
        return fail();
    }
    pixMap = map;
    hold(source);
    rowBytes = quickDraw.GetPixRowBytes(map);
    width = description.width;
    height = description.height;
    return true;
}

bool PictureEditor::lockMemoryBitmap(REALpictureStruct* source)
{
    if (IsDesktop || !pictureEditor::lockBitmapDescription(source, &description))
        return false;
    IsConsole = true;
    if (!pictureEditor::isUsableBitmap(description))
    {
        host.unlockPictureDescription(source);
        return false;
    }
    hold(source);
    pixelFormat = PixelFormatBGRX32;
    bytesPerPixel = 4;
    width = description.width;
    height = description.height;
    rowBytes = static_cast<int32_t>(static_cast<uint32_t>(width) * 4);
    rowTable = pictureEditor::bitmapRowTable(description);
    baseAddress = rowPointer = height > 0 ? rowTable[0] : nullptr;
    return true;
}

/// Draws `source` into a new 32-bit picture, which carries a reference for the caller; null when it cannot be
/// made.
REALpictureStruct* PictureEditor::drawCopy(REALpictureStruct* source, int32_t copyWidth, int32_t copyHeight)
{
    if (copyWidth < 1 || copyHeight < 1)
        return nullptr;
    REALpictureStruct* copy = host.REALNewPicture(copyWidth, copyHeight, 32);
    if (copy == nullptr)
        return nullptr;
    if (const Reference<REALgraphicsStruct> graphics{host.pluginPictureGraphicsGetter(copy)})
        GraphicsDrawPicture(graphics.get(), copy, source, 0, 0, copyWidth, copyHeight, 0, 0, copyWidth,
                            copyHeight);
    return copy;
}

/// Locks a copy in place of the caller's picture, which is no longer involved, and gives up the copy's
/// reference.
bool PictureEditor::lockCopy(REALpictureStruct* copy, bool read)
{
    const Reference<REALpictureStruct> releaseCopy{copy};
    return lockPicture(copy, read, false, false);
}

REALpictureStruct* PictureEditor::RenderPictureWriter()
{
    REALpictureStruct* result = nullptr;
    if (picture != nullptr)
    {
        result = Reference<REALpictureStruct>::retain(picture);
        host.REALPictureClearCache(picture);
    }
    else if (buffer != nullptr)
    {
        constexpr int32_t pixelType = 1;
        result = host.REALBuildPictureFromBuffer(width, height, pixelType, buffer, rowBytes);
    }
    clear();
    return result;
}

bool canBeMade(int32_t width, int32_t height)
{
    return width >= 1 && width <= longestPictureSide && height >= 1 && height <= longestPictureSide;
}

bool PictureWriter::openNew(int32_t newWidth, int32_t newHeight)
{
    if (!canBeMade(newWidth, newHeight))
        return false;
    const Reference<REALpictureStruct> created{host.REALNewPicture(newWidth, newHeight, 32)};
    return created && open(created.get());
}

void GraphicsDrawPicture(REALgraphicsStruct* graphics, REALpictureStruct* destination,
                         REALpictureStruct* source, int32_t x, int32_t y, int32_t w, int32_t h, int32_t sx,
                         int32_t sy, int32_t sw, int32_t sh)
{
    using DrawPictureMethod = void (*)(REALgraphicsStruct*, REALpictureStruct*, int32_t, int32_t, int32_t,
                                       int32_t, int32_t, int32_t, int32_t, int32_t);

    if (graphics != nullptr && source != nullptr)
    {
        const auto drawPicture = reinterpret_cast<DrawPictureMethod>(host.REALLoadObjectMethod(
            graphics,
            "DrawPicture(Image as Picture, x as Integer, y as Integer, w as Integer, h as Integer, "
            "sx as Integer = 0, sy as Integer = 0, sw as Integer = -10000, sh as Integer = -10000)"));
        if (drawPicture != nullptr)
        {
            drawPicture(graphics, source, x, y, w, h, sx, sy, sw, sh);
            return;
        }
    }

    // Older hosts are asked for their own drawing function, whose answer nobody uses; kept as it is.
    if (hostVersion < pictureEditor::firstNewerHostVersion)
        host.RuntimeGraphicsDrawPicture.available();

    if (source == nullptr || destination == nullptr || sw != w || sh != h)
        return;
    REALpictureDescription from{};
    if (!pictureEditor::lockBitmapDescription(source, &from))
        return;
    REALpictureDescription to{};
    if (pictureEditor::lockBitmapDescription(destination, &to))
    {
        pictureEditor::copyBitmapRows(from, to);
        host.unlockPictureDescription(destination);
    }
    host.unlockPictureDescription(source);
    host.REALPictureClearCache(destination);
}

} // namespace qvr
