#include "orlixcamera/imageformatconverter.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <utility>

#include "gcbase/gcexception.h"
#include "orlixcamera/conversion/conversionerror.h"
#include "orlixcamera/conversion/conversionjob.h"
#include "orlixcamera/conversion/conversiontable.h"
#include "orlixcamera/conversion/linequeue.h"
#include "orlixcamera/conversion/parallelstrips.h"
#include "orlixcamera/conversion/pictures.h"
#include "orlixcamera/conversion/rowmemory.h"
#include "orlixcamera/conversion/streams.h"
#include "orlixcamera/orliximage.h"

namespace Orlix {
namespace {

using Entry = Detail::EnumerationEntry;

constexpr std::array PixelFormatEntries{
    Entry{PixelType_BGRA8Packed, "BGRA8Packed"},
    Entry{PixelType_BGR8Packed, "BGR8Packed"},
    Entry{PixelType_Mono8, "Mono8"},
    Entry{PixelType_Mono16, "Mono16"},
    Entry{PixelType_RGB8Packed, "RGB8Packed"},
    Entry{PixelType_RGB16Packed, "RGB16Packed"},
    Entry{PixelType_RGB8Planar, "RGB8Planar"},
    Entry{PixelType_RGB16Planar, "RGB16Planar"},
    Entry{PixelType_YUV444Planar, "YUV444Planar"},
    Entry{PixelType_YUV422Planar, "YUV422Planar"},
    Entry{PixelType_YUV420Planar, "YUV420Planar"},
};
constexpr std::array BitAlignmentEntries{
    Entry{OutputBitAlignment_LsbAligned, "LsbAligned"},
    Entry{OutputBitAlignment_MsbAligned, "MsbAligned"},
};
constexpr std::array OrientationEntries{
    Entry{OutputOrientation_BottomUp, "BottomUp"},
    Entry{OutputOrientation_TopDown, "TopDown"},
    Entry{OutputOrientation_Unchanged, "Unchanged"},
};
constexpr std::array BayerBorderEntries{
    Entry{BayerBorder_CopyInner, "CopyInner"},
    Entry{BayerBorder_Repeat, "Repeat"},
};

constexpr ParameterTexts PixelFormatTexts{"OutputPixelFormat", "Output Pixel Format",
                                          "Sets the pixel format of the output image.",
                                          "Sets the pixel format of the output image."};
constexpr ParameterTexts BitAlignmentTexts{
    "OutputBitAlignment", "Output Bit Alignment",
    "Sets the alignment of the bits in the target pixel type.",
    "Sets the alignment of the bits in the target pixel type if the target bit depth is greater "
    "than the source bit depth."};
constexpr ParameterTexts PaddingTexts{
    "OutputPaddingX", "Output Padding X",
    "Number of additional data bytes at the end of each line.",
    "Number of additional data bytes at the end of each line. In planar formats they are at the "
    "end of each line of each plane. These bytes are set to zero during the conversion."};
constexpr ParameterTexts OrientationTexts{
    "OutputOrientation", "Output Orientation",
    "Sets the vertical orientation of the output image in the buffer.",
    "Sets the vertical orientation of the output image in the buffer."};
constexpr ParameterTexts BayerBorderTexts{
    "BayerBorder", "Bayer Border", "Sets how the border of a Bayer image is treated.",
    "Sets what stands in for the neighbors that a pixel at the border of a Bayer image lacks."};
constexpr ParameterTexts ThreadsTexts{
    "MaxNumThreads", "Max Num Threads", "Sets the maximum number of threads used for a conversion.",
    "Sets the maximum number of threads used for the conversion of one image. If it is set to 1, "
    "the image is converted in the thread of the caller alone."};

std::int64_t HardwareThreads() {
    return std::max<std::int64_t>(1, std::thread::hardware_concurrency());
}

EImageOrientation GetOutputOrientation(OutputOrientationEnums wanted, EImageOrientation source) {
    switch (wanted) {
        case OutputOrientation_BottomUp:
            return ImageOrientation_BottomUp;
        case OutputOrientation_TopDown:
            return ImageOrientation_TopDown;
        case OutputOrientation_Unchanged:
            break;
    }
    return source;
}

// Fewer bytes of the source cost more to hand over than to convert.
constexpr std::uint64_t LeastStripBytes = 65536;

std::uint32_t CountThreads(const SourcePicture& source, std::int64_t most) {
    const std::uint64_t worthwhile = source.planes.size / LeastStripBytes + 1;
    const std::uint64_t pairs = (std::uint64_t{source.height} + 1) / 2;
    return static_cast<std::uint32_t>(
        std::min({worthwhile, pairs, static_cast<std::uint64_t>(std::max<std::int64_t>(1, most))}));
}

std::uint32_t CountLeastLines(const SourcePicture& source) {
    const std::uint64_t lines = LeastStripBytes * source.height / source.planes.size;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(lines, source.height));
}

std::uint8_t* GetRows(std::size_t size) {
    try {
        return RowsOfThisThread(size);
    } catch (const std::bad_alloc&) {
        const std::string text = "Can't convert an image: " + std::to_string(size) +
                                 " bytes for its rows could not be allocated.";
        throw GenICam::BadAllocException(text.c_str(), __FILE__, __LINE__);
    }
}

void ConvertLines(ConversionKernel kernel, const ConversionJob& job, const ImagePlanes& output,
                  const LineRange& lines) {
    kernel(job, lines.first, lines.end);
    ClearPadding(job, output, lines.first, lines.end);
}

void ConvertPicture(ConversionKernel kernel, const ConversionJob& job, const ImagePlanes& output,
                    std::uint32_t threads, std::uint32_t leastLines) {
    // All threads have their rows before the first begins, so that none can fail.
    const std::size_t rowBytes = NeedsRows(kernel, job) ? RowMemory::Size(job.width) : 0;
    std::uint8_t* rows = rowBytes > 0 ? GetRows(threads * rowBytes) : nullptr;
    LineQueue queue(job.height, threads, threads == 1 ? job.height : leastLines);
    const auto convert = [&](std::size_t thread) {
        ConversionJob own = job;
        own.rows = rows != nullptr ? rows + thread * rowBytes : nullptr;
        for (LineRange lines = queue.Take(); !lines.IsEmpty(); lines = queue.Take()) {
            ConvertLines(kernel, own, output, lines);
        }
        if (own.streams) {
            FinishStreams();
        }
    };
    if (threads == 1) {
        convert(0);
    } else {
        RunStrips(threads, convert);
    }
}

}  // namespace

CImageFormatConverter::CImageFormatConverter()
    : OutputPixelFormat(PixelFormatTexts, PixelFormatEntries, PixelType_BGRA8Packed),
      OutputBitAlignment(BitAlignmentTexts, BitAlignmentEntries, OutputBitAlignment_LsbAligned),
      OutputPaddingX(PaddingTexts, {0, 4294967295, 1}, 0),
      OutputOrientation(OrientationTexts, OrientationEntries, OutputOrientation_Unchanged),
      BayerBorder(BayerBorderTexts, BayerBorderEntries, BayerBorder_CopyInner),
      MaxNumThreads(ThreadsTexts, {1, HardwareThreads(), 1}, HardwareThreads()) {}

CImageFormatConverter::~CImageFormatConverter() = default;

bool CImageFormatConverter::ImageHasDestinationFormat(EPixelType sourcePixelType,
                                                      std::size_t sourcePaddingX,
                                                      EImageOrientation sourceOrientation) const {
    return sourcePixelType == OutputPixelFormat.GetValue() &&
           std::cmp_equal(sourcePaddingX, OutputPaddingX.GetValue()) &&
           sourceOrientation ==
               GetOutputOrientation(OutputOrientation.GetValue(), sourceOrientation);
}

bool CImageFormatConverter::ImageHasDestinationFormat(const COrlixImageBase& source) const {
    return ImageHasDestinationFormat(source.GetPixelType(), source.GetPaddingX(),
                                     source.GetOrientation());
}

bool CImageFormatConverter::IsSupportedInputFormat(EPixelType sourcePixelType) const noexcept {
    return FindConversionKernel(sourcePixelType, OutputPixelFormat.GetValue()) != nullptr;
}

void CImageFormatConverter::Convert(COrlixImage& destination, const void* source,
                                    std::size_t sourceSize, EPixelType sourcePixelType,
                                    std::uint32_t width, std::uint32_t height,
                                    std::size_t sourcePaddingX,
                                    EImageOrientation sourceOrientation) const {
    const EPixelType outputType = OutputPixelFormat.GetValue();
    const SourcePicture picture = CheckSource(
        {source, sourceSize, sourcePixelType, width, height, sourcePaddingX, sourceOrientation});
    const ConversionKernel kernel = FindConversionKernel(sourcePixelType, outputType);
    if (kernel == nullptr) {
        ThrowNoConversion(sourcePixelType, outputType);
    }
    const std::size_t padding = CheckOutputPadding(OutputPaddingX.GetValue());
    const EImageOrientation orientation =
        GetOutputOrientation(OutputOrientation.GetValue(), sourceOrientation);
    const std::size_t size = ComputeBufferSize(outputType, width, height, padding);
    std::shared_ptr<void> buffer = destination.AllocateBuffer(size);
    void* const pixels = buffer.get();
    const ImagePlanes output = ComputePlanes(outputType, width, height, padding);
    ConversionJob job = MakeJob(picture, static_cast<std::uint8_t*>(pixels), output, orientation);
    SetShift(job, sourcePixelType, outputType, OutputBitAlignment.GetValue());
    job.streams = IsBeyondCaches(picture.planes.size + output.size);
    job.copyInner = BayerBorder.GetValue() == BayerBorder_CopyInner;
    ConvertPicture(kernel, job, output, CountThreads(picture, MaxNumThreads.GetValue()),
                   CountLeastLines(picture));
    destination.AttachBuffer(std::move(buffer), pixels, size, outputType, width, height, padding,
                             orientation);
}

void CImageFormatConverter::Convert(COrlixImage& destination, const COrlixImageBase& source) const {
    Convert(destination, source.GetBuffer(), source.GetImageSize(), source.GetPixelType(),
            source.GetWidth(), source.GetHeight(), source.GetPaddingX(), source.GetOrientation());
}

}  // namespace Orlix
