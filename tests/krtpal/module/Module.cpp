// A module that holds nothing but what the build gives it.
extern "C" int VersionModuleNumber() {
    return 1;
}
