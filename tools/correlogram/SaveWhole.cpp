#include "InputError.h"
#include "Plot.h"

#include <fstream>
#include <random>
#include <system_error>

namespace correlogram {

void SaveWhole(const std::string& file, const std::string& bytes) {
    const std::filesystem::path target = PathOf(file);
    std::error_code failure;
    if (std::filesystem::is_directory(target, failure)) {
        throw InputError("Cannot write " + Quote(file) + ": it is a folder.");
    }
    std::filesystem::path part = target;
    part += ".";
    part += std::to_string(std::random_device{}());
    part += ".part";
    std::ofstream stream(part, std::ios::binary);
    const bool isOpen = stream.is_open();
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (stream) {
        failure.clear();
        std::filesystem::rename(part, target, failure);
        if (!failure) {
            return;
        }
    }
    std::error_code ignored;
    std::filesystem::remove(part, ignored);
    throw InputError("Cannot write " + Quote(file) + ": " +
                     (!isOpen   ? "no file can be made in that folder"
                      : failure ? failure.message()
                                : "the disk does not take it") +
                     ".");
}

} // namespace correlogram
