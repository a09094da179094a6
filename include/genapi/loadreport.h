// What the loader left out of a description, or took with a doubt. Nothing is dropped silently.
// Constant for the life of the map; any thread may read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace GenApi {

enum class LoadSeverity {
    warning,  // taken, though the description is not quite in order
    dropped   // an element, a link or a whole node that is not in the map
};

struct LoadRemark {
    LoadSeverity severity;
    std::string element;  // the XML element, as "Integer" or "pFeature"
    std::string name;     // the node that it is or belongs to; may be empty
    std::uint32_t line;   // of the description, from 1; 0 if it has none
    std::string reason;
    std::uint32_t document = 0;  // 0 for the description itself, then the injected ones in order
};

struct LoadReport {
    std::vector<LoadRemark> remarks;
    // Remarks beyond a bound are counted only, so that a hostile text can not fill the memory.
    std::size_t notListed = 0;
};

}  // namespace GenApi
