// A module of the suite's own kind: it takes part in the listing of a process's modules.

#ifdef _WIN32
#define EXPORT __declspec(dllexport)
#else
#define EXPORT __attribute__((visibility("default")))
#endif

extern "C" EXPORT void* GetVersionInfoModuleHandle() {
    return nullptr; // only the name counts
}
