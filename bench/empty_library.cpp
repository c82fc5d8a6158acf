// A library with nothing in it, to be loaded beside the module.
#ifdef _WIN32
extern "C" __declspec(dllexport) void Nothing() {}
#else
extern "C" __attribute__((visibility("default"))) void Nothing() {}
#endif
