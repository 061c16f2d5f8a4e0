/// \file
/// A host picture as locked rows of pixels, and a filled picture as an operation's result.
#pragma once

#include "abi/system_abi.h"
#include "runtime/references.h"

namespace qvr
{

/// Layout of a pixel in memory. `PictureEditor` never locks a picture of any other layout.
enum PixelFormat : int32_t
{
    PixelFormatBGRX32 = 8,  ///< bytes B, G, R, X; writers put 0 into X
    PixelFormatRGB24 = 12,  ///< bytes R, G, B
    PixelFormatARGB32 = 13, ///< bytes A, R, G, B; writers put 255 into A
};

/// The largest width or height of a picture that an operation makes.
constexpr int32_t longestPictureSide = 32767;

/// Whether an operation makes pictures of this size: both sides are 1 to 32767.
bool canBeMade(int32_t width, int32_t height);

/// The host's kind, found out by the first picture that is opened and never forgotten.
extern bool IsDesktop;
extern bool IsConsole;

/// Locks a host picture and presents it as rows of pixels.
///
/// An editor is empty after construction and after a release, and describes a locked buffer after
/// `GetPictureEditor` returned true. It holds one reference to the picture it describes. Everything it holds
/// is given back by `clear` and by the destructor, in the reverse order of locking. Editors cannot be copied.
class PictureEditor
{
public:
    PictureEditor() = default;
    virtual ~PictureEditor();
    PictureEditor(const PictureEditor&) = delete;
    PictureEditor& operator=(const PictureEditor&) = delete;

    /// Releases whatever is held and locks `source`. `source` stays the caller's; the editor takes a
    /// reference of its own.
    ///
    /// (true, false) reads; a picture that cannot be locked is drawn into a 32-bit copy, which is locked
    /// instead. (false, true) fills a picture just made; the host's cached rendering is cleared at release.
    /// (true, true) edits in place. False: the picture is null or cannot be had as one of the three pixel
    /// formats; the editor is empty.
    bool GetPictureEditor(REALpictureStruct* source, bool read, bool write);

    /// Gives the held picture back as a result with one reference owned by the caller, and releases the
    /// editor; null when nothing is held.
    REALpictureStruct* RenderPictureWriter();

    /// Releases everything held.
    void clear();

    /// Start of row `row`, which is not negative; past the last row it is row 0, never an error.
    uint8_t* rowAddress(int32_t row) const
    {
        if (row >= height)
            return baseAddress;
        if (pixelFormat == PixelFormatBGRX32)
            return rowTable[row];
        return baseAddress + static_cast<ptrdiff_t>(row) * rowBytes;
    }

    /// Moves the cursor to the start of row `row`, which is not negative.
    void SetRow(int32_t row)
    {
        y = row;
        x = 0;
        rowPointer = rowAddress(row);
    }

    /// Moves the cursor to the start of the next row; past the last row that is row 0, while `y` counts on.
    void NextRow()
    {
        SetRow(y + 1);
    }

    /// Editors live on the stack; the destructor's deleting variant needs a way to free one all the same.
    static void operator delete(void* block);

    // Pixels and rows are the host's, and valid while the editor describes a locked buffer.

    int32_t rowBytes = 0; ///< from one row to the next, in bytes; rows of `rowTable` lie anywhere
    int32_t width = 0;    ///< in pixels
    int32_t height = 0;   ///< in rows
    int32_t bytesPerPixel = 0;
    int32_t scratch = 0;                  ///< 0 after every lock and release; nothing depends on it
    int32_t pixelFormat = 0;              ///< a `PixelFormat`
    uint8_t* rowPointer = nullptr;        ///< the cursor's row
    REALpictureDescription description{}; ///< what the host's lock said
    uint8_t* buffer = nullptr;            ///< pixels of the editor's own; nothing fills it yet
    uint8_t* baseAddress = nullptr;       ///< row 0
    int32_t x = 0;                        ///< the cursor's column, in pixels
    int32_t y = 0;                        ///< the cursor's row; counts on past the last
    REALpictureStruct* picture = nullptr; ///< one reference is the editor's
    PixMapHandle pixMap = nullptr;        ///< locked by the editor; null unless the picture is a GWorld
    uint8_t** rowTable = nullptr;         ///< one pointer a row; `PixelFormatBGRX32` only
    bool readAccess = false;              ///< as asked for at the last lock
    bool writeAccess = false;             ///< the same; releasing a written picture clears the host's cache
    bool descriptionLocked = false;       ///< the host's lock is to be given back

private:
    bool lockPicture(REALpictureStruct* source, bool read, bool write, bool copyAllowed);
    bool lockGWorld(REALpictureStruct* source, bool copyAllowed);
    bool lockMemoryBitmap(REALpictureStruct* source);
    REALpictureStruct* drawCopy(REALpictureStruct* source, int32_t copyWidth, int32_t copyHeight);
    bool lockCopy(REALpictureStruct* copy, bool read);
    void hold(REALpictureStruct* source);
};

/// A source that is only read.
class PictureReader : public PictureEditor
{
public:
    ~PictureReader() override;

    /// Opens `source` for reading.
    bool open(REALpictureStruct* source)
    {
        return GetPictureEditor(source, true, false);
    }
};

/// The result that an operation fills.
class PictureWriter : public PictureEditor
{
public:
    ~PictureWriter() override;

    /// Opens an existing picture for writing.
    bool open(REALpictureStruct* destination)
    {
        return GetPictureEditor(destination, false, true);
    }

    /// Makes a new 32-bit picture and opens it; the writer holds its only reference. False when this
    /// size cannot be made, or when the host cannot make or lock the picture.
    bool openNew(int32_t newWidth, int32_t newHeight);
};

/// Draws `source` into the graphics of `destination`, with the host's own drawing or, when that is missing
/// and no scaling is asked for, by copying the rows of two memory bitmaps of one size.
///
/// The rectangle (x, y, w, h) receives the rectangle (sx, sy, sw, sh) of the source.
void GraphicsDrawPicture(REALgraphicsStruct* graphics, REALpictureStruct* destination,
                         REALpictureStruct* source, int32_t x, int32_t y, int32_t w, int32_t h, int32_t sx,
                         int32_t sy, int32_t sw, int32_t sh);

} // namespace qvr
