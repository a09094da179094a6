// The JSON behind a settings store and its sections, with a record of what was read of it.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "host/jsontext.h"
#include "orlixdataprocessingcore/core/settings.h"

namespace Orlix::Host {

using SettingsElements = std::vector<DataProcessing::Core::SettingsPath::Element>;

struct SettingsDocument {
    Json root = Json::object();
    std::string basePath;
    // Every path that was asked for, with all sections on the way to it.
    std::set<SettingsElements> read;
    // Sections and arrays whose elements were listed.
    std::set<SettingsElements> listed;
    SettingsElements lastRead;

    void noteRead(const SettingsElements& path);
    // Null if the path leads nowhere.
    [[nodiscard]] const Json* find(const SettingsElements& path) const;
};

// "a.b[3].c"
[[nodiscard]] std::string pathText(const SettingsElements& path);

}  // namespace Orlix::Host
