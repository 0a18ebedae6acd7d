#include "common/WriteFile.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

namespace tools {

void WriteWhole(const std::string& file, const std::function<void(std::ostream&)>& write,
                std::string (*quote)(const std::string&)) {
    const std::filesystem::path target = PathOf(file);
    const std::string what = "Cannot write " + quote(file);
    std::error_code failure;
    if (std::filesystem::is_directory(target, failure)) {
        throw Failure(what + ": it is a folder.");
    }
    std::filesystem::path part = target;
    part += "." + std::to_string(std::random_device{}()) + ".part";
    std::ofstream stream(part, std::ios::binary);
    if (!stream.is_open()) {
        throw Failure(what + ": no file can be made in that folder.");
    }
    try {
        write(stream);
        stream.close();
        if (!stream) {
            throw Failure(what + ": the disk does not take it.");
        }
        std::filesystem::rename(part, target, failure);
        if (failure) {
            throw Failure(what + ": " + failure.message() + ".");
        }
    } catch (...) {
        stream.close();
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
        throw;
    }
}

} // namespace tools
