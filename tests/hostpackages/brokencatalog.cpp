// A package whose catalog is cut off.
#include <cstdlib>
#include <cstring>

extern "C" {
__attribute__((visibility("default"))) unsigned int get_InterfaceVersion() {
    return 2;
}
__attribute__((visibility("default"))) char* create_StaticInfo() {
    return ::strdup("{\"Modules\": [");
}
__attribute__((visibility("default"))) void destroy_Info(char** info) {
    std::free(*info);
    *info = nullptr;
}
}
