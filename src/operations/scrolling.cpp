#include "operations/scrolling.h"

#include "editor/arithmetic.h"
#include "editor/picture_editor.h"
#include "system/heap_array.h"
#include "system/quickdraw.h"

namespace qvr::scrolling
{

namespace
{

/// The shift that has the same effect as `delta` on `length` (at least 1) rows or columns: above -length/2,
/// at most length - length/2.
int32_t normalisedShift(int32_t delta, int32_t length)
{
    const int32_t half = length / 2;
    int32_t shift = delta % length;
    if (shift >= half)
        shift -= length;
    if (shift <= -half)
        shift += length;
    return shift;
}

/// Rotates whole rows, each along its cycle of places, so that one row of working memory is enough.
bool rotateRows(const PictureEditor& picture, int32_t shift)
{
    if (shift == 0)
        return true;
    // The working memory that this method answers for is that of a copy of the rows that wrap; a size beyond
    // 32 bits fails.
    const int32_t savedRows = shift > 0 ? picture.height - shift : picture.height;
    if (wrappingMultiply(savedRows, picture.rowBytes) <= 0)
        return false;
    const HeapArray<uint8_t> saved(picture.rowBytes, Filling::Nothing);
    if (!saved)
        return false;

    const auto rowBytes = static_cast<size_t>(picture.rowBytes);
    const int32_t distance = shift > 0 ? shift : shift + picture.height;
    int32_t moved = 0;
    for (int32_t start = 0; moved < picture.height; ++start)
    {
        libc::memcpy(saved.get(), picture.rowAddress(start), rowBytes);
        int32_t row = start;
        for (;;)
        {
            ++moved;
            const int32_t from = row >= distance ? row - distance : row - distance + picture.height;
            if (from == start)
                break;
            libc::memcpy(picture.rowAddress(row), picture.rowAddress(from), rowBytes);
            row = from;
        }
        libc::memcpy(picture.rowAddress(row), saved.get(), rowBytes);
    }
    return true;
}

/// Rotates the pixels of every row.
void rotateColumns(const PictureEditor& picture, int32_t shift)
{
    if (shift == 0)
        return;
    const int64_t rowLength = static_cast<int64_t>(picture.width) * picture.bytesPerPixel;
    if (rowLength > INT32_MAX)
        return;
    const HeapArray<uint8_t> saved(static_cast<int32_t>(rowLength), Filling::Nothing);
    if (!saved)
        return;
    const int32_t distance = shift > 0 ? shift : shift + picture.width;
    const auto wrapped = static_cast<size_t>(distance) * static_cast<size_t>(picture.bytesPerPixel);
    const size_t kept = static_cast<size_t>(rowLength) - wrapped;
    for (int32_t row = 0; row < picture.height; ++row)
    {
        uint8_t* const pixels = picture.rowAddress(row);
        libc::memcpy(saved.get(), pixels, static_cast<size_t>(rowLength));
        libc::memcpy(pixels, saved.get() + kept, wrapped);
        libc::memcpy(pixels + wrapped, saved.get(), kept);
    }
}

/// Shifts a GWorld's content with QuickDraw, which erases the uncovered band. False when the picture is no
/// GWorld.
bool shiftGWorld(REALpictureStruct* picture, int16_t columns, int16_t rows)
{
    if (picture == nullptr)
        return false;
    REALpictureDescription description{};
    host.lockPictureDescription(picture, &description);
    const bool isGWorld = description.type == pictureGWorldPtr && description.data != nullptr;
    // A port that cannot be asked for could not be put back.
    if (isGWorld && quickDraw.GetGWorld.available())
    {
        CGrafPtr port = nullptr;
        GDHandle device = nullptr;
        quickDraw.GetGWorld(&port, &device);
        quickDraw.SetGWorld(static_cast<GWorldPtr>(description.data), nullptr);
        if (RgnHandle uncovered = quickDraw.NewRgn(); uncovered != nullptr)
        {
            const Rect content{0, 0, static_cast<int16_t>(description.height),
                               static_cast<int16_t>(description.width)};
            quickDraw.ScrollRect(&content, columns, rows, uncovered);
            quickDraw.DisposeRgn(uncovered);
        }
        quickDraw.SetGWorld(port, device);
    }
    host.unlockPictureDescription(picture);
    return isGWorld;
}

Reference<REALpictureStruct> maskToScroll(REALpictureStruct* picture, signed char scrollMask)
{
    const bool wanted = picture != nullptr && scrollMask != 0;
    return Reference<REALpictureStruct>(wanted ? host.REALGetPictureMask(picture, false) : nullptr);
}

} // namespace

signed char ScrollVerticalQVR(REALpictureStruct* picture, int32_t delta, signed char wrap,
                              signed char scrollMask)
{
    if (const auto mask = maskToScroll(picture, scrollMask))
        if (ScrollVerticalQVR(mask.get(), delta, wrap, 0) == 0)
            return 0;
    if (delta == 0)
        return 1;
    if (wrap == 0)
        return shiftGWorld(picture, 0, static_cast<int16_t>(delta)) ? 1 : 0;
    PictureEditor editor;
    if (!editor.GetPictureEditor(picture, true, true) || editor.height < 1 || editor.width < 1)
        return 0;
    return rotateRows(editor, normalisedShift(delta, editor.height)) ? 1 : 0;
}

signed char ScrollHorizontalQVR(REALpictureStruct* picture, int32_t delta, signed char wrap,
                                signed char scrollMask)
{
    if (const auto mask = maskToScroll(picture, scrollMask))
        ScrollHorizontalQVR(mask.get(), delta, wrap, 0);
    if (delta == 0)
        return 1;
    if (wrap == 0)
    {
        shiftGWorld(picture, static_cast<int16_t>(delta), 0);
        return 1;
    }
    PictureEditor editor;
    if (editor.GetPictureEditor(picture, true, true) && editor.width > 0)
        rotateColumns(editor, normalisedShift(delta, editor.width));
    return 1;
}

signed char ScrollQVR(REALpictureStruct* picture, int32_t deltaX, int32_t deltaY, signed char wrap,
                      signed char scrollMask)
{
    ScrollHorizontalQVR(picture, deltaX, wrap, scrollMask);
    return ScrollVerticalQVR(picture, deltaY, wrap, scrollMask);
}

} // namespace qvr::scrolling
