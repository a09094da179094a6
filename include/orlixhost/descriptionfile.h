// A GenICam description file as a live node map, on a port that is plain memory: to look at what a
// camera offers without the camera.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "orlixhost/api.h"

namespace GenApi {
class INodeMap;
class IPort;
}  // namespace GenApi

namespace Orlix::Host {

// What the port holds before the first access, as `--memory` gives it: a number of bytes, all zero,
// or the name of a file. Empty: 64 KiB of zeros. It grows where it is written.
struct MemoryImage {
    std::string sizeOrFile;
};

// Owns the map and its port.
class ORLIXHOST_API DescriptionFile {
public:
    // XML, or a ZIP archive with it. Throws RuntimeException that names the file and, for a
    // description that is broken, line and column.
    explicit DescriptionFile(const std::string& file, const MemoryImage& memory = {});
    ~DescriptionFile();
    DescriptionFile(const DescriptionFile&) = delete;
    DescriptionFile& operator=(const DescriptionFile&) = delete;

    [[nodiscard]] GenApi::INodeMap& nodeMap() noexcept;
    // The memory itself, beside the map and its caches.
    [[nodiscard]] GenApi::IPort& port() noexcept;

    // The bytes become the chunk of a chunk port, or the data of the event that a node is for.
    // Ports of chunks and events are not on the memory. RuntimeException if the node is for none.
    void attachChunk(const std::string& portNode, const std::vector<std::uint8_t>& bytes);
    void deliverEvent(const std::string& node, const std::vector<std::uint8_t>& bytes);

    // The feature tree, and behind it what the loader dropped.
    void print(std::ostream& out);
    void printAsJson(std::ostream& out);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace Orlix::Host
