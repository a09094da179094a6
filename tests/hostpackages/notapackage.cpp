// A shared library that is no package.
extern "C" __attribute__((visibility("default"))) int answer() {
    return 42;
}
