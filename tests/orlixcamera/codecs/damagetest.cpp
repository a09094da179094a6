#include "orlixcamera/codecs/damagetest.h"

#include <algorithm>
#include <string>

#include "gcbase/gcexception.h"
#include "orlixcamera/bufferpool.h"

namespace Orlix::Test {

void putLittle(Bytes& bytes, std::size_t place, std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size && place + i < bytes.size(); ++i) {
        bytes[place + i] = static_cast<unsigned char>(value >> (8 * i));
    }
}

std::uint32_t getLittle(const Bytes& bytes, std::size_t place, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        value |= std::uint32_t{bytes.at(place + i)} << (8 * i);
    }
    return value;
}

void DamageTest::TryToLoad(const Bytes& bytes, std::size_t ratio) {
    const std::string path = folder.Write("damaged", bytes);
    BufferPool& pool = BufferPool::Instance();
    pool.ResetPeak();
    const std::size_t before = pool.GetStatistics().usedBytes;
    try {
        const COrlixImage image = load(path);
        EXPECT_TRUE(image.IsValid());
        // Every byte of it is there.
        const auto* data = static_cast<const unsigned char*>(image.GetBuffer());
        const volatile unsigned char last = data[image.GetImageSize() - 1];
        static_cast<void>(last);
        ++loadedCount;
    } catch (const GenICam::RuntimeException& error) {
        EXPECT_NE(std::string(error.GetDescription()).find("'" + path + "'"), std::string::npos);
        ++failedCount;
    }
    // The widening of samples, and the readers' own buffers.
    const std::size_t allowed = bytes.size() * ratio * 8 + (std::size_t{1} << 20U);
    EXPECT_LE(pool.GetStatistics().peakUsedBytes - before, allowed);
}

void DamageTest::TryAllDamage(const Bytes& whole) {
    TryToLoad(whole);
    EXPECT_EQ(loadedCount, 1U);
    // Every byte of the header, and samples of what follows.
    const std::size_t step = std::max<std::size_t>(1, whole.size() / 600);
    for (std::size_t i = 0; i < whole.size(); i += i < 250 ? 1 : step) {
        for (const unsigned flip : {0x01U, 0x80U, 0xFFU}) {
            Bytes damaged = whole;
            damaged[i] = static_cast<unsigned char>(damaged[i] ^ flip);
            TryToLoad(damaged);
        }
        const auto end = whole.begin() + static_cast<std::ptrdiff_t>(i);
        TryToLoad(Bytes(whole.begin(), end));
    }
    EXPECT_GT(failedCount, 10U);
    TryManyFlips(whole);
}

void DamageTest::TryManyFlips(const Bytes& whole) {
    for (std::uint32_t seed = 0; seed < 100; ++seed) {
        const Bytes random = noise(60, seed);
        Bytes damaged = whole;
        for (std::size_t i = 0; i < random.size(); i += 3) {
            const std::size_t place = (random[i] * 256U + random[i + 1]) % whole.size();
            damaged[place] = random[i + 2];
        }
        TryToLoad(damaged);
    }
}

}  // namespace Orlix::Test
