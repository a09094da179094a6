// The base of tests with files that are not what they should be: whatever such a file says, a load
// gives a picture or an error that names the file, and takes no more memory than it could decode
// to.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "orlixcamera/codecs/testfiles.h"

namespace Orlix::Test {

// Bounds of fields of all widths, and the codes that formats give to their forms.
inline constexpr std::array<std::uint32_t, 30> boundaryValues = {
    0,   1,   2,   3,     4,     5,     6,      7,          8,          9,
    10,  15,  16,  17,    24,    31,    32,     33,         64,         127,
    128, 255, 256, 32767, 32768, 65535, 65536U, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

// Numbers of up to four bytes, the lowest first; those that would lie outside are left out.
void putLittle(Bytes& bytes, std::size_t place, std::uint32_t value, std::size_t size);
[[nodiscard]] std::uint32_t getLittle(const Bytes& bytes, std::size_t place, std::size_t size);

class DamageTest : public testing::Test {
protected:
    // `ratio` is the most that one byte of the file may decode to.
    void TryToLoad(const Bytes& bytes, std::size_t ratio = 2048);
    // Cuts the file anywhere, flips bytes of its start and of samples of the rest.
    void TryAllDamage(const Bytes& whole);

    TemporaryFolder folder;
    std::size_t loadedCount = 0;
    std::size_t failedCount = 0;

private:
    void TryManyFlips(const Bytes& whole);
};

// Tests with headers that say what they should not; most of their files must fail.
class HostileTest : public DamageTest {
protected:
    ~HostileTest() override { EXPECT_GT(failedCount, 10U); }
};

}  // namespace Orlix::Test
