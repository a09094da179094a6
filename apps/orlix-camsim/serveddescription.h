// The description file that the simulated camera serves: that of the emulated one, with its
// registers moved behind those that the standard prescribes, and with the features of a GigE Vision
// device. Made once; a plain value.
#pragma once

#include <cstdint>
#include <string>

namespace Orlix::Camsim {

// Where the registers of the emulated camera begin, and where the file lies.
inline constexpr std::uint32_t cameraBase = 0x00100000;
inline constexpr std::uint32_t fileBase = 0x00200000;

enum class FileForm : std::uint8_t { Plain, Zipped };
enum class EventIds : std::uint8_t { Short, Long };  // 16 or 64 bits in event messages

struct ServedDescription {
    std::string bytes;  // as they lie in the device
    std::string url;    // "Local:NAME;ADDRESS;LENGTH"
};

[[nodiscard]] ServedDescription MakeDescription(const std::string& emulated, FileForm form,
                                                EventIds eventIds);
// The text alone, as a client sees it.
[[nodiscard]] std::string MakeDescriptionText(const std::string& emulated, EventIds eventIds);
// An archive with that one file in it.
[[nodiscard]] std::string ZipOneFile(const std::string& name, const std::string& content);

}  // namespace Orlix::Camsim
