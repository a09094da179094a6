#include "orlixcamera/pixeltypemapper.h"

#include <gtest/gtest.h>

#include "orlixcamera/pixel/pixeltable.h"

namespace Orlix::Test {
namespace {

TEST(PixelTypeMapper, EachFormatIsFoundByTheNameThatItGives) {
    for (const PixelFormat& format : AllPixelFormats()) {
        const char* const name = CPixelTypeMapper::GetNameByPixelType(format.pixelType);
        EXPECT_EQ(name, format.name);
        EXPECT_EQ(CPixelTypeMapper::GetPixelTypeByName(name), format.pixelType) << name;
    }
}

TEST(PixelTypeMapper, BothGenerationsOfNamesAreUnderstoodAndTheOlderIsGiven) {
    const struct {
        const char* newer;
        const char* canonical;
    } names[] = {
        {"Mono1p", "Mono1Packed"},
        {"RGB8", "RGB8Packed"},
        {"BGR8", "BGR8Packed"},
        {"RGBa8", "RGBA8Packed"},
        {"BGRa8", "BGRA8Packed"},
        {"RGB16", "RGB16Packed"},
        {"RGB10p32", "RGB10V2Packed"},
        {"RGB8_Planar", "RGB8Planar"},
        {"YUV422_8", "YUV422_YUYV_Packed"},
        {"YUV422_8_UYVY", "YUV422Packed"},
        {"YUV8_UYV", "YUV444Packed"},
        {"YUV411_8_UYYVYY", "YUV411Packed"},
    };
    for (const auto& [newer, canonical] : names) {
        const EPixelType type = CPixelTypeMapper::GetPixelTypeByName(newer);
        EXPECT_NE(type, PixelType_Undefined) << newer;
        EXPECT_STREQ(CPixelTypeMapper::GetNameByPixelType(type), canonical);
        EXPECT_EQ(CPixelTypeMapper::GetOrlixPixelTypeByName(canonical), type);
    }
}

TEST(PixelTypeMapper, AnUnknownNameGivesUndefined) {
    for (const char* name : {"", "mono8", "Mono8 ", "Mono9", "PixelType_Mono8"}) {
        EXPECT_EQ(CPixelTypeMapper::GetPixelTypeByName(name), PixelType_Undefined) << name;
    }
}

TEST(PixelTypeMapper, AnUnknownTypeGivesAnEmptyName) {
    EXPECT_STREQ(CPixelTypeMapper::GetNameByPixelType(PixelType_Undefined), "");
    EXPECT_STREQ(CPixelTypeMapper::GetNameByPixelType(static_cast<EPixelType>(12)), "");
}

}  // namespace
}  // namespace Orlix::Test
