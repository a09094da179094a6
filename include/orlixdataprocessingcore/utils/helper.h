// Text helpers that treat every byte beyond ASCII as an opaque part of UTF-8, whatever the locale.
// Pure functions.
#pragma once

#include "gcbase/gcstring.h"
#include "orlixdataprocessingcore/api.h"

namespace Orlix::DataProcessing::Utils {

class ORLIXDATAPROCESSINGCORE_API Helper {
public:
    Helper() = delete;

    // a to z become A to Z, nothing else changes.
    [[nodiscard]] static GenICam::gcstring toUpper(const GenICam::gcstring& text);
    // Without the blanks, tabs, line feeds, carriage returns, vertical tabs and form feeds at
    // both ends.
    [[nodiscard]] static GenICam::gcstring trim(const GenICam::gcstring& text);
};

}  // namespace Orlix::DataProcessing::Utils

namespace Orlix::DataProcessing::Core {
using Utils::Helper;
}
