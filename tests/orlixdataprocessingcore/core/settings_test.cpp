#include "orlixdataprocessingcore/core/settings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

namespace {

using Orlix::DataProcessing::Core::ISettings;

// Where a virtual function stands in the table of its class: a pointer to one holds its place.
template <typename Function>
std::ptrdiff_t placeOf(Function ISettings::*function) {
    std::ptrdiff_t place = 0;
    static_assert(sizeof(function) >= sizeof(place));
    std::memcpy(&place, &function, sizeof(place));
    return place;
}

// Hosts and packages that were built apart meet in these tables.
TEST(ISettings, OperationsKeepTheirOrder) {
    const std::vector<std::ptrdiff_t> places = {
        placeOf(&ISettings::hasBasePath), placeOf(&ISettings::getBasePath),
        placeOf(&ISettings::contains),    placeOf(&ISettings::getBool),
        placeOf(&ISettings::getString),   placeOf(&ISettings::getInteger),
        placeOf(&ISettings::getUnsigned), placeOf(&ISettings::setBool),
        placeOf(&ISettings::setString),   placeOf(&ISettings::setInteger),
        placeOf(&ISettings::setUnsigned)};
    EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
    const std::vector<std::ptrdiff_t> containers = {
        placeOf(&ISettings::getArraySize), placeOf(&ISettings::getKeys),
        placeOf(&ISettings::setArraySize), placeOf(&ISettings::createSection)};
    EXPECT_TRUE(std::is_sorted(containers.begin(), containers.end()));
}

}  // namespace
