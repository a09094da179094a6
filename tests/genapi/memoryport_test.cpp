#include "genapi/memoryport.h"

#include <gtest/gtest.h>

#include <limits>

#include "genapi/testmap.h"

using namespace GenApiTest;

TEST(MemoryPort, StartsWith64KiBOfZeros) {
    CMemoryPort port;
    EXPECT_EQ(port.GetSize(), 65536);
    std::int64_t value = 5;
    port.Read(&value, 65528, 8);
    EXPECT_EQ(value, 0);
}

TEST(MemoryPort, GrowsWhereItIsWrittenAndKeepsTheBytes) {
    CMemoryPort port;
    const std::int64_t value = 0x1122334455667788;
    port.Write(&value, 0x7FFF'FFFC, 8);
    std::int64_t back = 0;
    port.Read(&back, 0x7FFF'FFFC, 8);
    EXPECT_EQ(back, value);
    EXPECT_GT(port.GetSize(), 65536);
}

TEST(MemoryPort, TakesAddressesWithTheTopBitsSet) {
    CMemoryPort port;
    const std::int64_t address = std::numeric_limits<std::int64_t>::min() + 4;
    const std::int32_t value = 77;
    port.Write(&value, address, 4);
    std::int32_t back = 0;
    port.Read(&back, address, 4);
    EXPECT_EQ(back, 77);
}

TEST(MemoryPort, ReadingDoesNotGrowIt) {
    CMemoryPort port;
    std::int64_t value = 5;
    port.Read(&value, 1 << 20, 8);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(port.GetSize(), 65536);
}

TEST(MemoryPort, RefusesWhatIsBeyondItsLimit) {
    CMemoryPort port(4096, 8192);
    std::vector<char> bytes(10000);
    EXPECT_EQ(
        errorOf<GenICam::OutOfRangeException>([&] { port.Read(bytes.data(), 0, 10000); }),
        "Memory port: reading of 10000 bytes at address 0 is more than the 8192 bytes that it "
        "may hold.");
    port.Write(bytes.data(), 1 << 20, 10);
    EXPECT_EQ(errorOf<GenICam::OutOfRangeException>([&] { port.Write(bytes.data(), 1 << 24, 10); }),
              "Memory port: writing of 10 bytes at address 16777216 needs more than the 8192 bytes "
              "that it may hold.");
    EXPECT_THROW(port.Read(bytes.data(), 0, -1), GenICam::OutOfRangeException);
}
