#include "orlixdataprocessingcore/core/bufferprovider.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "orlixdataprocessingcore/core/services.h"

namespace Orlix::DataProcessing::Core {
namespace {

TEST(BufferProvider, GivesAlignedMemoryOfTheAskedSize) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{63}, std::size_t{1000000}}) {
        const auto buffer = getDefaultBufferProvider()->getBuffer(size);
        ASSERT_NE(buffer, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.get()) % 64, 0U);
        std::memset(buffer.get(), 0x5a, size);
    }
}

TEST(BufferProvider, ABufferOutlivesTheProvidersPointer) {
    auto provider = getDefaultBufferProvider();
    const auto buffer = provider->getBuffer(100);
    provider.reset();
    std::memset(buffer.get(), 1, 100);
}

TEST(BufferProvider, IsOneForTheProcess) {
    EXPECT_EQ(getDefaultBufferProvider(), getDefaultBufferProvider());
}

}  // namespace
}  // namespace Orlix::DataProcessing::Core
