#include "convertrivals.h"

#include <cstring>
#include <memory>

#include "orlixcamera/bufferpool.h"
#include "orlixcamera/pixel/planes.h"

#ifdef ORLIX_HAS_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#ifdef ORLIX_HAS_LIBYUV
#include <libyuv.h>
#endif

namespace Orlix::Benchmarks {
namespace {

// All write to memory of the same kind as the converter does, which is there before they begin.
using Bytes = std::shared_ptr<std::uint8_t>;

Bytes MakeBytes(std::size_t size) {
    const std::shared_ptr<void> memory = BufferPool::Instance().Allocate(size);
    std::memset(memory.get(), 1, size);
    return {memory, static_cast<std::uint8_t*>(memory.get())};
}

// The unpacked formats say how fast they are by what they move: as many bytes as are read and
// written, copied.
Rival MakeCopy(const Picture& source, EPixelType destination) {
    const std::size_t moved = ComputeBufferSize(source.type, source.width, source.height) +
                              ComputeBufferSize(destination, source.width, source.height);
    const std::size_t size = moved / 2;
    const Bytes from = MakeBytes(size);
    const Bytes to = MakeBytes(size);
    return {"memcpy", [=] { std::memcpy(to.get(), from.get(), size); }};
}

bool IsUnpacking(EPixelType source, EPixelType destination) {
    return IsMono(source) && IsPacked(source) && IsMono(destination);
}

#ifdef ORLIX_HAS_OPENCV

int MatType(EPixelType type) {
    const int depth = BitDepth(type) == 8 ? CV_8U : CV_16U;
    const auto channels =
        IsPlanar(type) ? 1 : static_cast<int>(BitsPerPixel(type) / BitDepth(type));
    return CV_MAKETYPE(depth, channels);
}

cv::Mat MakeMat(const Picture& source, int type) {
    // The library takes no constant memory, but doesn't write to it.
    return {static_cast<int>(source.height), static_cast<int>(source.width), type,
            const_cast<std::uint8_t*>(source.bytes)};
}

// A matrix that the library finds fitting and writes to; the memory stays with who keeps both.
struct Target {
    Bytes memory;
    std::shared_ptr<cv::Mat> mat;
};

Target MakeTarget(int width, int height, int type) {
    const std::size_t bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                              static_cast<std::size_t>(CV_ELEM_SIZE(type));
    const Bytes memory = MakeBytes(bytes);
    return {memory, std::make_shared<cv::Mat>(height, width, type, memory.get())};
}

Target MakeTarget(const Picture& source, EPixelType type) {
    const auto width = static_cast<int>(source.width);
    const auto height = static_cast<int>(source.height);
    if (type == PixelType_YUV420Planar) {
        return MakeTarget(width, height * 3 / 2, CV_8UC1);
    }
    return MakeTarget(width, height, type == PixelType_YUV444Planar ? CV_8UC3 : MatType(type));
}

struct Code {
    EPixelType source;
    EPixelType destination;
    int code;
};

// Its names of the Bayer patterns are those of the second line's second column.
const Code Codes[] = {
    {PixelType_BayerRG8, PixelType_BGR8Packed, cv::COLOR_BayerBG2BGR},
    {PixelType_BayerRG8, PixelType_RGB8Packed, cv::COLOR_BayerBG2RGB},
    {PixelType_BayerRG8, PixelType_Mono8, cv::COLOR_BayerBG2GRAY},
    {PixelType_BayerRG10, PixelType_RGB16Packed, cv::COLOR_BayerBG2RGB},
    {PixelType_BayerRG12, PixelType_RGB16Packed, cv::COLOR_BayerBG2RGB},
    {PixelType_BayerRG16, PixelType_RGB16Packed, cv::COLOR_BayerBG2RGB},
    {PixelType_Mono8, PixelType_BGRA8Packed, cv::COLOR_GRAY2BGRA},
    {PixelType_Mono8, PixelType_RGB8Packed, cv::COLOR_GRAY2RGB},
    {PixelType_RGB8Packed, PixelType_BGRA8Packed, cv::COLOR_RGB2BGRA},
    {PixelType_RGB8Packed, PixelType_BGR8Packed, cv::COLOR_RGB2BGR},
    {PixelType_RGB8Packed, PixelType_Mono8, cv::COLOR_RGB2GRAY},
    {PixelType_RGBA8Packed, PixelType_BGRA8Packed, cv::COLOR_RGBA2BGRA},
    {PixelType_BGRA8Packed, PixelType_BGR8Packed, cv::COLOR_BGRA2BGR},
    {PixelType_BGRA8Packed, PixelType_Mono8, cv::COLOR_BGRA2GRAY},
    {PixelType_RGB16Packed, PixelType_Mono16, cv::COLOR_RGB2GRAY},
    {PixelType_YUV422Packed, PixelType_BGR8Packed, cv::COLOR_YUV2BGR_UYVY},
    {PixelType_YUV422_YUYV_Packed, PixelType_BGR8Packed, cv::COLOR_YUV2BGR_YUYV},
    // The same work in other planes: interleaved, and of limited range.
    {PixelType_RGB8Packed, PixelType_YUV444Planar, cv::COLOR_RGB2YUV},
    {PixelType_RGB8Packed, PixelType_YUV420Planar, cv::COLOR_RGB2YUV_I420},
};

void AddColourCode(std::vector<Rival>& rivals, const Picture& source, EPixelType destination) {
    for (const Code& row : Codes) {
        if (row.source == source.type && row.destination == destination) {
            const cv::Mat from = MakeMat(source, MatType(source.type));
            const Target to = MakeTarget(source, destination);
            const int code = row.code;
            rivals.push_back({"OpenCV", [=] { cv::cvtColor(from, *to.mat, code); }});
        }
    }
}

// It has no packed samples: an obvious loop over groups of samples takes their upper eight bits.
using Unpack = void (*)(const std::uint8_t* line, std::size_t groups, std::uint8_t* row);

constexpr std::uint8_t Join(unsigned low, unsigned high, int shift) {
    return static_cast<std::uint8_t>((low | high << 8U) >> shift);
}
void Unpack10p(const std::uint8_t* line, std::size_t groups, std::uint8_t* row) {
    for (std::size_t group = 0; group < groups; ++group, line += 5, row += 4) {
        row[0] = Join(line[0], line[1], 2);
        row[1] = Join(line[1], line[2], 4);
        row[2] = Join(line[2], line[3], 6);
        row[3] = line[4];
    }
}
void Unpack12p(const std::uint8_t* line, std::size_t groups, std::uint8_t* row) {
    for (std::size_t group = 0; group < groups; ++group, line += 3, row += 2) {
        row[0] = Join(line[0], line[1], 4);
        row[1] = line[2];
    }
}
void Unpack12Packed(const std::uint8_t* line, std::size_t groups, std::uint8_t* row) {
    for (std::size_t group = 0; group < groups; ++group, line += 3, row += 2) {
        row[0] = line[0];
        row[1] = line[2];
    }
}

struct PackedRow {
    EPixelType source;
    Unpack unpack;
    std::size_t group;
};
constexpr PackedRow PackedRows[] = {
    {PixelType_BayerRG10p, Unpack10p, 4},
    {PixelType_BayerRG12p, Unpack12p, 2},
    {PixelType_BayerRG12Packed, Unpack12Packed, 2},
};

void AddUnpackAndDemosaic(std::vector<Rival>& rivals, const Picture& source,
                          const PackedRow& packed) {
    const std::size_t stride = ComputeStride(packed.source, source.width);
    const auto raw = std::make_shared<cv::Mat>(static_cast<int>(source.height),
                                               static_cast<int>(source.width), CV_8UC1);
    const Target to = MakeTarget(source, PixelType_BGR8Packed);
    rivals.push_back({"loop and OpenCV", [=] {
                          for (std::uint32_t y = 0; y < source.height; ++y) {
                              packed.unpack(source.bytes + y * stride, source.width / packed.group,
                                            raw->ptr(static_cast<int>(y)));
                          }
                          cv::cvtColor(*raw, *to.mat, cv::COLOR_BayerBG2BGR);
                      }});
}

void AddDepthOrPlanes(std::vector<Rival>& rivals, const Picture& source, EPixelType destination) {
    const cv::Mat from = MakeMat(source, MatType(source.type));
    if (destination == PixelType_RGB8Planar && source.type == PixelType_RGB8Packed) {
        const Target to = MakeTarget(static_cast<int>(source.width),
                                     3 * static_cast<int>(source.height), CV_8UC1);
        const auto height = static_cast<int>(source.height);
        const std::vector<cv::Mat> made{to.mat->rowRange(0, height),
                                        to.mat->rowRange(height, 2 * height),
                                        to.mat->rowRange(2 * height, 3 * height)};
        const auto planes = std::make_shared<std::vector<cv::Mat>>(made);
        rivals.push_back({"OpenCV", [=, keep = to] { cv::split(from, *planes); }});
    }
    const bool down = (source.type == PixelType_Mono16 && destination == PixelType_Mono8) ||
                      (source.type == PixelType_RGB16Packed && destination == PixelType_RGB8Packed);
    const bool up = (source.type == PixelType_Mono8 && destination == PixelType_Mono16) ||
                    (source.type == PixelType_RGB8Packed && destination == PixelType_RGB16Packed);
    if (down || up) {
        const Target to = MakeTarget(source, destination);
        const int type = MatType(destination);
        rivals.push_back(
            {"OpenCV", [=] { from.convertTo(*to.mat, type, down ? 1.0 / 256 : 1.0); }});
    }
}

void AddOpenCv(std::vector<Rival>& rivals, const Picture& source, EPixelType destination) {
    cv::setNumThreads(1);
    AddColourCode(rivals, source, destination);
    AddDepthOrPlanes(rivals, source, destination);
    if (destination != PixelType_BGR8Packed) {
        return;
    }
    for (const PackedRow& packed : PackedRows) {
        if (packed.source == source.type) {
            AddUnpackAndDemosaic(rivals, source, packed);
        }
    }
}

#endif

#ifdef ORLIX_HAS_LIBYUV

// One call of the library: lines of the source, planes of the destination.
struct Call {
    const std::uint8_t* source;
    std::uint8_t* to[3];
    std::uint8_t* scratch;  // four bytes a pixel
    int width;
    int height;
    int chroma;  // bytes in a line of a chroma plane
};

using Function = void (*)(const Call&);

struct Row {
    EPixelType source;
    EPixelType destination;
    Function function;
};

// By way of a line of four bytes a pixel, where it has no function for a pair.
using ToPlanes = int (*)(const std::uint8_t*, int, std::uint8_t*, int, std::uint8_t*, int,
                         std::uint8_t*, int, int, int);
template <ToPlanes Convert>
void ConvertToYuv(const Call& c, int chroma) {
    for (int y = 0; y < c.height; ++y) {
        libyuv::RAWToARGB(c.source + y * c.width * 3, c.width * 3, c.scratch, c.width * 4, c.width,
                          1);
        Convert(c.scratch, c.width * 4, c.to[0] + y * c.width, c.width, c.to[1] + y * chroma,
                chroma, c.to[2] + y * chroma, chroma, c.width, 1);
    }
}

using ToArgb = int (*)(const std::uint8_t*, int, std::uint8_t*, int, int, int);
template <ToArgb Convert>
void ConvertToBgr(const Call& c) {
    for (int y = 0; y < c.height; ++y) {
        Convert(c.source + y * c.width * 2, c.width * 2, c.scratch, c.width * 4, c.width, 1);
        libyuv::ARGBToRGB24(c.scratch, c.width * 4, c.to[0] + y * c.width * 3, c.width * 3, c.width,
                            1);
    }
}

// Its RGB24 has blue first, its RAW red; its ARGB is our BGRA.
const Row Rows[] = {
    {PixelType_RGB8Packed, PixelType_Mono8,
     [](const Call& c) {
         libyuv::RAWToJ400(c.source, c.width * 3, c.to[0], c.width, c.width, c.height);
     }},
    {PixelType_RGB8Packed, PixelType_BGR8Packed,
     [](const Call& c) {
         libyuv::RAWToRGB24(c.source, c.width * 3, c.to[0], c.width * 3, c.width, c.height);
     }},
    {PixelType_RGB8Packed, PixelType_BGRA8Packed,
     [](const Call& c) {
         libyuv::RAWToARGB(c.source, c.width * 3, c.to[0], c.width * 4, c.width, c.height);
     }},
    {PixelType_RGB8Packed, PixelType_RGB8Planar,
     [](const Call& c) {
         libyuv::SplitRGBPlane(c.source, c.width * 3, c.to[0], c.width, c.to[1], c.width, c.to[2],
                               c.width, c.width, c.height);
     }},
    {PixelType_Mono8, PixelType_BGRA8Packed,
     [](const Call& c) {
         libyuv::J400ToARGB(c.source, c.width, c.to[0], c.width * 4, c.width, c.height);
     }},
    {PixelType_BGRA8Packed, PixelType_BGR8Packed,
     [](const Call& c) {
         libyuv::ARGBToRGB24(c.source, c.width * 4, c.to[0], c.width * 3, c.width, c.height);
     }},
    {PixelType_BGRA8Packed, PixelType_Mono8,
     [](const Call& c) {
         libyuv::ARGBToJ400(c.source, c.width * 4, c.to[0], c.width, c.width, c.height);
     }},
    {PixelType_Mono16, PixelType_Mono8,
     [](const Call& c) {
         libyuv::Convert16To8Plane(reinterpret_cast<const std::uint16_t*>(c.source), c.width,
                                   c.to[0], c.width, 256, c.width, c.height);
     }},
    {PixelType_RGB8Packed, PixelType_YUV444Planar,
     [](const Call& c) { ConvertToYuv<libyuv::ARGBToI444>(c, c.width); }},
    {PixelType_RGB8Packed, PixelType_YUV422Planar,
     [](const Call& c) { ConvertToYuv<libyuv::ARGBToJ422>(c, c.chroma); }},
    {PixelType_RGB8Packed, PixelType_YUV420Planar,
     [](const Call& c) {
         libyuv::RAWToJ420(c.source, c.width * 3, c.to[0], c.width, c.to[1], c.chroma, c.to[2],
                           c.chroma, c.width, c.height);
     }},
    {PixelType_YUV422Packed, PixelType_BGRA8Packed,
     [](const Call& c) {
         libyuv::UYVYToARGB(c.source, c.width * 2, c.to[0], c.width * 4, c.width, c.height);
     }},
    {PixelType_YUV422_YUYV_Packed, PixelType_BGRA8Packed,
     [](const Call& c) {
         libyuv::YUY2ToARGB(c.source, c.width * 2, c.to[0], c.width * 4, c.width, c.height);
     }},
    {PixelType_YUV422Packed, PixelType_BGR8Packed, ConvertToBgr<libyuv::UYVYToARGB>},
    {PixelType_YUV422_YUYV_Packed, PixelType_BGR8Packed, ConvertToBgr<libyuv::YUY2ToARGB>},
    {PixelType_YCbCr420_8_YY_CbCr_Semiplanar, PixelType_BGR8Packed,
     [](const Call& c) {
         libyuv::NV12ToRGB24(c.source, c.width, c.source + c.width * c.height, c.chroma * 2,
                             c.to[0], c.width * 3, c.width, c.height);
     }},
    {PixelType_YCbCr422_8_YY_CbCr_Semiplanar, PixelType_BGR8Packed,
     [](const Call& c) {
         for (int y = 0; y < c.height; ++y) {
             libyuv::NV12ToRGB24(c.source + y * c.width, c.width,
                                 c.source + c.width * c.height + y * c.chroma * 2, c.chroma * 2,
                                 c.to[0] + y * c.width * 3, c.width * 3, c.width, 1);
         }
     }},
};

void AddLibYuv(std::vector<Rival>& rivals, const Picture& source, EPixelType destination) {
    for (const Row& row : Rows) {
        if (row.source != source.type || row.destination != destination) {
            continue;
        }
        const ImagePlanes planes = ComputePlanes(destination, source.width, source.height, 0);
        const Bytes to = MakeBytes(planes.size);
        const Bytes scratch = MakeBytes(std::size_t{source.width} * 4);
        Call call{source.bytes,
                  {},
                  scratch.get(),
                  static_cast<int>(source.width),
                  static_cast<int>(source.height),
                  static_cast<int>((source.width + 1) / 2)};
        for (std::size_t plane = 0; plane < planes.count; ++plane) {
            call.to[plane] = to.get() + planes.planes[plane].offset;
        }
        const Function function = row.function;
        rivals.push_back({"libyuv", [=, keep = std::pair(to, scratch)] { function(call); }});
    }
}

#endif

}  // namespace

std::vector<Rival> MakeRivals(const Picture& source, EPixelType destination) {
    std::vector<Rival> rivals;
    if (IsUnpacking(source.type, destination)) {
        rivals.push_back(MakeCopy(source, destination));
    }
#ifdef ORLIX_HAS_OPENCV
    AddOpenCv(rivals, source, destination);
#endif
#ifdef ORLIX_HAS_LIBYUV
    AddLibYuv(rivals, source, destination);
#endif
    return rivals;
}

std::string DescribeRivals() {
    std::string text = "memcpy";
#ifdef ORLIX_HAS_OPENCV
    text += ", OpenCV " CV_VERSION;
#else
    text += ", no OpenCV (it was not found when this was configured)";
#endif
#ifdef ORLIX_HAS_LIBYUV
    text += ", libyuv " + std::to_string(LIBYUV_VERSION);
#else
    text += ", no libyuv (it was not found when this was configured)";
#endif
    return text;
}

}  // namespace Orlix::Benchmarks
