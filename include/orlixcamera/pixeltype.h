// The pixel formats of camera images: their numbers, as the public pixel format naming convention
// fixes them, and what follows from a number about the bytes of an image. Plain values and pure
// functions: any thread may use them at any time.
#pragma once

#include <cstdint>

#include "orlixcamera/api.h"

namespace Orlix {

// A name of its own for each format; CPixelTypeMapper translates names. Bits 16 to 23 of a value
// are the bits that a pixel occupies, 24 to 30 tell one sample a pixel (01) from several (02), and
// bit 31 marks the formats that exist in memory only. 64 bits wide, so that each value is the
// number of the convention and yet -1 stands for none.
enum EPixelType : std::int64_t {
    // No format is known. Every query about it answers "nothing" or throws, as each says.
    PixelType_Undefined = -1,

    // Monochrome. "Packed" without a p is the older packing, which for 10 and 12 bits puts two
    // pixels into three bytes; p is the continuous packing, lowest bits first.
    PixelType_Mono1Packed = 0x01010037,
    PixelType_Mono2Packed = 0x01020038,
    PixelType_Mono4Packed = 0x01040039,
    PixelType_Mono8 = 0x01080001,
    PixelType_Mono8s = 0x01080002,
    PixelType_Mono10 = 0x01100003,
    PixelType_Mono10Packed = 0x010C0004,
    PixelType_Mono10p = 0x010A0046,
    PixelType_Mono12 = 0x01100005,
    PixelType_Mono12Packed = 0x010C0006,
    PixelType_Mono12p = 0x010C0047,
    PixelType_Mono14 = 0x01100025,
    PixelType_Mono14p = 0x010E0104,
    PixelType_Mono16 = 0x01100007,
    PixelType_Mono32 = 0x01200111,

    // Bayer patterns, named by the first two pixels of the first line.
    PixelType_BayerGR4p = 0x0104010D,
    PixelType_BayerRG4p = 0x0104010E,
    PixelType_BayerGB4p = 0x0104010F,
    PixelType_BayerBG4p = 0x01040110,
    PixelType_BayerGR8 = 0x01080008,
    PixelType_BayerRG8 = 0x01080009,
    PixelType_BayerGB8 = 0x0108000A,
    PixelType_BayerBG8 = 0x0108000B,
    PixelType_BayerGR10 = 0x0110000C,
    PixelType_BayerRG10 = 0x0110000D,
    PixelType_BayerGB10 = 0x0110000E,
    PixelType_BayerBG10 = 0x0110000F,
    PixelType_BayerGR12 = 0x01100010,
    PixelType_BayerRG12 = 0x01100011,
    PixelType_BayerGB12 = 0x01100012,
    PixelType_BayerBG12 = 0x01100013,
    PixelType_BayerGR10Packed = 0x010C0026,
    PixelType_BayerRG10Packed = 0x010C0027,
    PixelType_BayerGB10Packed = 0x010C0028,
    PixelType_BayerBG10Packed = 0x010C0029,
    PixelType_BayerGR12Packed = 0x010C002A,
    PixelType_BayerRG12Packed = 0x010C002B,
    PixelType_BayerGB12Packed = 0x010C002C,
    PixelType_BayerBG12Packed = 0x010C002D,
    PixelType_BayerGR16 = 0x0110002E,
    PixelType_BayerRG16 = 0x0110002F,
    PixelType_BayerGB16 = 0x01100030,
    PixelType_BayerBG16 = 0x01100031,
    PixelType_BayerBG10p = 0x010A0052,
    PixelType_BayerBG12p = 0x010C0053,
    PixelType_BayerGB10p = 0x010A0054,
    PixelType_BayerGB12p = 0x010C0055,
    PixelType_BayerGR10p = 0x010A0056,
    PixelType_BayerGR12p = 0x010C0057,
    PixelType_BayerRG10p = 0x010A0058,
    PixelType_BayerRG12p = 0x010C0059,
    PixelType_BayerGR14p = 0x010E0105,
    PixelType_BayerRG14p = 0x010E0106,
    PixelType_BayerGB14p = 0x010E0107,
    PixelType_BayerBG14p = 0x010E0108,
    PixelType_BayerGR14 = 0x01100109,
    PixelType_BayerRG14 = 0x0110010A,
    PixelType_BayerGB14 = 0x0110010B,
    PixelType_BayerBG14 = 0x0110010C,

    // Red, green and blue. Packed here means that the samples of a pixel lie side by side.
    PixelType_RGB8Packed = 0x02180014,
    PixelType_BGR8Packed = 0x02180015,
    PixelType_RGBA8Packed = 0x02200016,
    PixelType_BGRA8Packed = 0x02200017,
    PixelType_RGB10Packed = 0x02300018,
    PixelType_BGR10Packed = 0x02300019,
    PixelType_RGB12Packed = 0x0230001A,
    PixelType_BGR12Packed = 0x0230001B,
    PixelType_RGB10V1Packed = 0x0220001C,
    PixelType_RGB10V2Packed = 0x0220001D,
    PixelType_RGB12V1Packed = 0x02240034,
    PixelType_RGB16Packed = 0x02300033,
    PixelType_RGB565p = 0x02100035,
    PixelType_BGR565p = 0x02100036,
    PixelType_RGB8Planar = 0x02180021,
    PixelType_RGB10Planar = 0x02300022,
    PixelType_RGB12Planar = 0x02300023,
    PixelType_RGB16Planar = 0x02300024,
    PixelType_BGR10p = 0x021E0048,
    PixelType_BGR12p = 0x02240049,
    PixelType_BGR14 = 0x0230004A,
    PixelType_BGR16 = 0x0230004B,
    PixelType_BGRa10 = 0x0240004C,
    PixelType_BGRa10p = 0x0228004D,
    PixelType_BGRa12 = 0x0240004E,
    PixelType_BGRa12p = 0x0230004F,
    PixelType_BGRa14 = 0x02400050,
    PixelType_BGRa16 = 0x02400051,
    PixelType_RGB10p = 0x021E005C,
    PixelType_RGB12p = 0x0224005D,
    PixelType_RGB14 = 0x0230005E,
    PixelType_RGBa10 = 0x0240005F,
    PixelType_RGBa10p = 0x02280060,
    PixelType_RGBa12 = 0x02400061,
    PixelType_RGBa12p = 0x02300062,
    PixelType_RGBa14 = 0x02400063,
    PixelType_RGBa16 = 0x02400064,
    PixelType_R8 = 0x010800C9,
    PixelType_R16 = 0x011000CC,
    PixelType_G8 = 0x010800CD,
    PixelType_G16 = 0x011000D0,
    PixelType_B8 = 0x010800D1,
    PixelType_B16 = 0x011000D4,

    // Luma and chroma in one plane.
    PixelType_YUV411Packed = 0x020C001E,
    PixelType_YUV422Packed = 0x0210001F,
    PixelType_YUV422_YUYV_Packed = 0x02100032,
    PixelType_YUV444Packed = 0x02180020,
    PixelType_YCbCr8_CbYCr = 0x0218003A,
    PixelType_YCbCr422_8 = 0x0210003B,
    PixelType_YCbCr411_8_CbYYCrYY = 0x020C003C,
    PixelType_YCbCr601_8_CbYCr = 0x0218003D,
    PixelType_YCbCr601_422_8 = 0x0210003E,
    PixelType_YCbCr601_411_8_CbYYCrYY = 0x020C003F,
    PixelType_YCbCr709_8_CbYCr = 0x02180040,
    PixelType_YCbCr709_422_8 = 0x02100041,
    PixelType_YCbCr709_411_8_CbYYCrYY = 0x020C0042,
    PixelType_YCbCr422_8_CbYCrY = 0x02100043,
    PixelType_YCbCr601_422_8_CbYCrY = 0x02100044,
    PixelType_YCbCr709_422_8_CbYCrY = 0x02100045,
    PixelType_YCbCr411_8 = 0x020C005A,
    PixelType_YCbCr8 = 0x0218005B,
    PixelType_YCbCr422_10 = 0x02200065,
    PixelType_YCbCr422_12 = 0x02200066,
    PixelType_YCbCr10_CbYCr = 0x02300083,
    PixelType_YCbCr10p_CbYCr = 0x021E0084,
    PixelType_YCbCr12_CbYCr = 0x02300085,
    PixelType_YCbCr12p_CbYCr = 0x02240086,
    PixelType_YCbCr422_10p = 0x02140087,
    PixelType_YCbCr422_12p = 0x02180088,
    PixelType_YCbCr601_10_CbYCr = 0x02300089,
    PixelType_YCbCr601_10p_CbYCr = 0x021E008A,
    PixelType_YCbCr601_12_CbYCr = 0x0230008B,
    PixelType_YCbCr601_12p_CbYCr = 0x0224008C,
    PixelType_YCbCr601_422_10 = 0x0220008D,
    PixelType_YCbCr601_422_10p = 0x0214008E,
    PixelType_YCbCr601_422_12 = 0x0220008F,
    PixelType_YCbCr601_422_12p = 0x02180090,
    PixelType_YCbCr709_10_CbYCr = 0x02300091,
    PixelType_YCbCr709_10p_CbYCr = 0x021E0092,
    PixelType_YCbCr709_12_CbYCr = 0x02300093,
    PixelType_YCbCr709_12p_CbYCr = 0x02240094,
    PixelType_YCbCr709_422_10 = 0x02200095,
    PixelType_YCbCr709_422_10p = 0x02140096,
    PixelType_YCbCr709_422_12 = 0x02200097,
    PixelType_YCbCr709_422_12p = 0x02180098,
    PixelType_YCbCr422_10_CbYCrY = 0x02200099,
    PixelType_YCbCr422_10p_CbYCrY = 0x0214009A,
    PixelType_YCbCr422_12_CbYCrY = 0x0220009B,
    PixelType_YCbCr422_12p_CbYCrY = 0x0218009C,
    PixelType_YCbCr601_422_10_CbYCrY = 0x0220009D,
    PixelType_YCbCr601_422_10p_CbYCrY = 0x0214009E,
    PixelType_YCbCr601_422_12_CbYCrY = 0x0220009F,
    PixelType_YCbCr601_422_12p_CbYCrY = 0x021800A0,
    PixelType_YCbCr709_422_10_CbYCrY = 0x022000A1,
    PixelType_YCbCr709_422_10p_CbYCrY = 0x021400A2,
    PixelType_YCbCr709_422_12_CbYCrY = 0x022000A3,
    PixelType_YCbCr709_422_12p_CbYCrY = 0x021800A4,

    // Luma and chroma in planes: one for luma, then one with both chroma samples (semiplanar) or
    // two.
    PixelType_YCbCr420_8_YY_CbCr_Semiplanar = 0x020C0112,
    PixelType_YCbCr422_8_YY_CbCr_Semiplanar = 0x02100113,
    PixelType_YCbCr420_8_YY_CrCb_Semiplanar = 0x020C0114,
    PixelType_YCbCr422_8_YY_CrCb_Semiplanar = 0x02100115,
    PixelType_YUV420Planar = 0x820C0040,
    PixelType_YUV422Planar = 0x82100042,
    PixelType_YUV444Planar = 0x82180044,

    // Two colours a pixel.
    PixelType_BiColorRGBG8 = 0x021000A5,
    PixelType_BiColorBGRG8 = 0x021000A6,
    PixelType_BiColorRGBG10 = 0x022000A7,
    PixelType_BiColorRGBG10p = 0x021400A8,
    PixelType_BiColorBGRG10 = 0x022000A9,
    PixelType_BiColorBGRG10p = 0x021400AA,
    PixelType_BiColorRGBG12 = 0x022000AB,
    PixelType_BiColorRGBG12p = 0x021800AC,
    PixelType_BiColorBGRG12 = 0x022000AD,
    PixelType_BiColorBGRG12p = 0x021800AE,

    // Places in space and how sure they are.
    PixelType_Coord3D_A8 = 0x010800AF,
    PixelType_Coord3D_B8 = 0x010800B0,
    PixelType_Coord3D_C8 = 0x010800B1,
    PixelType_Coord3D_ABC8 = 0x021800B2,
    PixelType_Coord3D_ABC8_Planar = 0x021800B3,
    PixelType_Coord3D_AC8 = 0x021000B4,
    PixelType_Coord3D_AC8_Planar = 0x021000B5,
    PixelType_Coord3D_A16 = 0x011000B6,
    PixelType_Coord3D_B16 = 0x011000B7,
    PixelType_Coord3D_C16 = 0x011000B8,
    PixelType_Coord3D_ABC16 = 0x023000B9,
    PixelType_Coord3D_ABC16_Planar = 0x023000BA,
    PixelType_Coord3D_AC16 = 0x022000BB,
    PixelType_Coord3D_AC16_Planar = 0x022000BC,
    PixelType_Coord3D_A32f = 0x012000BD,
    PixelType_Coord3D_B32f = 0x012000BE,
    PixelType_Coord3D_C32f = 0x012000BF,
    PixelType_Coord3D_ABC32f = 0x026000C0,
    PixelType_Coord3D_ABC32f_Planar = 0x026000C1,
    PixelType_Coord3D_AC32f = 0x024000C2,
    PixelType_Coord3D_AC32f_Planar = 0x024000C3,
    PixelType_Confidence1 = 0x010800C4,
    PixelType_Confidence1p = 0x010100C5,
    PixelType_Confidence8 = 0x010800C6,
    PixelType_Confidence16 = 0x011000C7,
    PixelType_Confidence32f = 0x012000C8,
    PixelType_Coord3D_A10p = 0x010A00D5,
    PixelType_Coord3D_B10p = 0x010A00D6,
    PixelType_Coord3D_C10p = 0x010A00D7,
    PixelType_Coord3D_A12p = 0x010C00D8,
    PixelType_Coord3D_B12p = 0x010C00D9,
    PixelType_Coord3D_C12p = 0x010C00DA,

    // Raw data.
    PixelType_Data8 = 0x01080116,
    PixelType_Data8s = 0x01080117,
    PixelType_Data16 = 0x01100118,
    PixelType_Data16s = 0x01100119,
    PixelType_Data32 = 0x0120011A,
    PixelType_Data32s = 0x0120011B,
    PixelType_Data32f = 0x0120011C,
    PixelType_Data64 = 0x0140011D,
    PixelType_Data64s = 0x0140011E,
    PixelType_Data64f = 0x0140011F,
};

// The bits that one pixel occupies in memory on average, from the value itself, so that it holds
// for formats not listed above, too; 0 for PixelType_Undefined.
[[nodiscard]] constexpr std::uint32_t BitsPerPixel(EPixelType pixelType) noexcept {
    return pixelType == PixelType_Undefined
               ? 0
               : (static_cast<std::uint32_t>(pixelType) >> 16U) & std::uint32_t{0xFF};
}

// The bits of one sample that carry the picture, such as 12 for Mono12p; 0 for an unknown format.
[[nodiscard]] ORLIXCAMERA_API std::uint32_t BitDepth(EPixelType pixelType) noexcept;

// All of these answer false for an unknown format.
[[nodiscard]] ORLIXCAMERA_API bool IsKnown(EPixelType pixelType) noexcept;
// One grey sample a pixel; a Bayer pattern is no such format.
[[nodiscard]] ORLIXCAMERA_API bool IsMono(EPixelType pixelType) noexcept;
[[nodiscard]] ORLIXCAMERA_API bool IsBayer(EPixelType pixelType) noexcept;
// Several colour samples a pixel: the RGB and the YUV families; a Bayer pattern is no such format.
[[nodiscard]] ORLIXCAMERA_API bool IsColor(EPixelType pixelType) noexcept;
[[nodiscard]] ORLIXCAMERA_API bool IsYuv(EPixelType pixelType) noexcept;
// Samples share bytes with their neighbours, as in Mono12p and Mono12Packed. RGB8Packed, whose
// name means "not planar", is no such format.
[[nodiscard]] ORLIXCAMERA_API bool IsPacked(EPixelType pixelType) noexcept;
// More than one plane, semiplanar formats included.
[[nodiscard]] ORLIXCAMERA_API bool IsPlanar(EPixelType pixelType) noexcept;

// The bytes from the start of one line to the start of the next: the line's pixels, rounded up to
// whole bytes and whole chroma groups, plus `paddingX`. For planar formats it is that of the first
// plane. Throws InvalidArgumentException for an unknown format, OutOfRangeException where 64 bits
// are too few.
[[nodiscard]] ORLIXCAMERA_API std::uint64_t ComputeStride(EPixelType pixelType, std::uint32_t width,
                                                          std::uint64_t paddingX = 0);

// The bytes of an image, with `paddingX` bytes at the end of each line of each plane. Throws as
// ComputeStride does.
[[nodiscard]] ORLIXCAMERA_API std::uint64_t ComputeBufferSize(EPixelType pixelType,
                                                              std::uint32_t width,
                                                              std::uint32_t height,
                                                              std::uint64_t paddingX = 0);

}  // namespace Orlix
