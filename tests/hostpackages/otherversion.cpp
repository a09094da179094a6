// A package of a later interface version.
extern "C" {
__attribute__((visibility("default"))) unsigned int get_InterfaceVersion() {
    return 3;
}
__attribute__((visibility("default"))) char* create_StaticInfo() {
    return nullptr;
}
__attribute__((visibility("default"))) void destroy_Info(char**) {}
}
