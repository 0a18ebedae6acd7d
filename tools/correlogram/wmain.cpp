// Entry point where a command line is wide text (Windows): any file name comes in whole.

#include "Program.h"

#include <filesystem>
#include <iostream>

int wmain(int count, wchar_t** values) {
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        const std::u8string utf8 = std::filesystem::path(values[i]).u8string();
        arguments.emplace_back(utf8.begin(), utf8.end());
    }
    return correlogram::Run(arguments, std::cout, std::cerr);
}
