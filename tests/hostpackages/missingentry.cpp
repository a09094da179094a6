// A package whose catalog promises a node that it has no entry point for.
#include <cstdlib>
#include <cstring>

namespace {
constexpr const char* catalog = R"({"Version": "1.0.0", "Vendor": "Test", "Modules": [
{"Name": "Ghost", "Uuid": "00000000-0000-0000-0000-000000000001", "ObjectVersion": "1.0.0",
 "MinRequiredSoftwareVersion": "1.0.0", "MinRequiredFileVersion": "1.0.0",
 "InterfaceType": "Native", "DisplayName": "Ghost", "Tags": [], "ShortDescription": "",
 "DetailedDescription": "", "SupportedUuids": [], "HasDynamicInfo": false}]})";
}

extern "C" {
__attribute__((visibility("default"))) unsigned int get_InterfaceVersion() {
    return 2;
}
__attribute__((visibility("default"))) char* create_StaticInfo() {
    return ::strdup(catalog);
}
__attribute__((visibility("default"))) void destroy_Info(char** info) {
    std::free(*info);
    *info = nullptr;
}
}
