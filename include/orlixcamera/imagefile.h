// Image files: writing them, and telling their formats. The functions keep no state and may be
// called on any thread; an image must not be written to meanwhile.
#pragma once

#include <cstdint>

#include "gcbase/gcstring.h"
#include "orlixcamera/api.h"
#include "orlixcamera/pixeltype.h"

namespace Orlix {

class COrlixImageBase;

enum EImageFileFormat : std::int32_t {
    ImageFileFormat_Undefined = -1,
    ImageFileFormat_Bmp = 0,
    ImageFileFormat_Tiff = 1,
    ImageFileFormat_Jpeg = 2,
    ImageFileFormat_Png = 4,
};

struct ImageSaveOptions {
    int jpegQuality = 90;         // 1 to 100
    int pngCompressionLevel = 3;  // 0, none, to 9; files of higher levels are hardly smaller
};

// A file appears under its name only when it is complete: it is written beside it and renamed, and
// nothing stays if that fails. Rows are written from the top one on, without their padding.
class ORLIXCAMERA_API CImagePersistence {
public:
    CImagePersistence() = delete;

    // True if the format holds images of that pixel type with every sample as it is (in JPEG, as
    // near as JPEG comes):
    //
    //   BMP    Mono8, RGB8Packed, BGR8Packed, RGBA8Packed, BGRA8Packed
    //   JPEG   Mono8, RGB8Packed, BGR8Packed
    //   PNG    Mono8, Mono16, RGB8Packed, BGR8Packed, RGBA8Packed, BGRA8Packed, RGB16Packed
    //   TIFF   all of PNG's; RGB8Planar and RGB16Planar in planes; YUV444Planar, YUV422Planar and
    //          YUV420Planar as YCbCr with the samples of a group side by side; Mono10, Mono12,
    //          Mono14 and Bayer patterns of whole bytes as gray, their samples unscaled
    //
    // Loading gives the same pixel type again for Mono8, Mono16, RGB8Packed, RGBA8Packed and
    // RGB16Packed, and for BGR8Packed and BGRA8Packed in a BMP file.
    [[nodiscard]] static bool CanSave(EImageFileFormat format, EPixelType pixelType) noexcept;

    // Throws InvalidArgumentException for an empty image, RuntimeException that names the file,
    // its format and the cause for everything else.
    static void Save(EImageFileFormat format, const GenICam::gcstring& path,
                     const COrlixImageBase& image, const ImageSaveOptions& options = {});

    // What the extension of a path stands for, upper or lower case.
    [[nodiscard]] static EImageFileFormat FormatOfPath(const GenICam::gcstring& path);
};

// As CImagePersistence::Save in the format that the extension of the path tells.
ORLIXCAMERA_API void saveImage(const GenICam::gcstring& path, const COrlixImageBase& image,
                               const ImageSaveOptions& options = {});

}  // namespace Orlix
