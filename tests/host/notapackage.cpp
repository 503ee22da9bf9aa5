// A shared library without a package entry: the host must pass it over.
extern "C" __attribute__((visibility("default"))) int hxReadFakeEcho(int, const char**) { return 1; }
