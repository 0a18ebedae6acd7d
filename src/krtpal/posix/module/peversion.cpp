// Reads the version resource of a PE module by the published layout of such files: DOS header, PE header,
// section table, and the resource directory with its levels kind, name and language.

#include "krtpal/posix/module/modulefile.h"

#include <algorithm>
#include <cstring>

namespace krtpal::posix {

namespace {

constexpr std::uint32_t kVersionResource = 16;
constexpr std::uint32_t kNeutral = 0;
constexpr std::uint32_t kEnglishUs = 0x409;
constexpr std::uint32_t kIsFolder = 0x80000000U;
constexpr unsigned kResourceDirectory = 2;
// Limit for damaged files.
constexpr unsigned kMostEntries = 4096;

struct FileHeader {
    std::uint16_t machine;
    std::uint16_t sections;
    std::uint32_t time;
    std::uint32_t symbols;
    std::uint32_t symbolCount;
    std::uint16_t optionalSize;
    std::uint16_t flags;
};

struct Section {
    char name[8];
    std::uint32_t virtualSize;
    std::uint32_t address;
    std::uint32_t rawSize;
    std::uint32_t rawOffset;
    std::uint32_t unused[4];
};

struct Folder {
    std::uint32_t flags;
    std::uint32_t time;
    std::uint32_t version;
    std::uint16_t named;
    std::uint16_t numbered;
};

struct Entry {
    std::uint32_t number;
    std::uint32_t offset; // from the start of the directory; with kIsFolder for a folder
};

struct Data {
    std::uint32_t address;
    std::uint32_t size;
    std::uint32_t codePage;
    std::uint32_t unused;
};

class PeFile {
public:
    explicit PeFile(const ModuleFile& file) : m_file(file) {}

    std::vector<unsigned char> VersionResource() {
        Data data{};
        std::uint64_t offset = 0;
        if (!ReadHeaders() || !FindData(&data) || data.size > kMostBytes ||
            !OffsetOf(data.address, &offset)) {
            return {};
        }
        std::vector<unsigned char> block(std::min<std::size_t>(data.size, kLargestVersionBlock));
        return m_file.Read(offset, block.data(), block.size()) ? block : std::vector<unsigned char>();
    }

private:
    static constexpr std::uint32_t kMostBytes = 1U << 24;

    bool ReadHeaders() {
        std::uint16_t magic = 0;
        std::uint32_t start = 0;
        std::uint32_t signature = 0;
        constexpr std::uint64_t kStartAt = 0x3C;
        if (!m_file.Read(0, &magic) || magic != 0x5A4D || !m_file.Read(kStartAt, &start) ||
            !m_file.Read(start, &signature) || signature != 0x4550) {
            return false;
        }
        const std::uint64_t header = std::uint64_t{start} + sizeof(signature);
        FileHeader file{};
        const std::uint64_t optional = header + sizeof(file);
        std::uint16_t width = 0;
        if (!m_file.Read(header, &file) || !m_file.Read(optional, &width) ||
            (width != 0x10B && width != 0x20B)) {
            return false;
        }
        // The directories follow their number at the end of the optional header.
        const std::uint64_t countAt = width == 0x10B ? 92 : 108;
        const std::uint64_t directoryAt =
            countAt + sizeof(std::uint32_t) + std::uint64_t{kResourceDirectory} * 8;
        std::uint32_t count = 0;
        std::uint32_t address = 0;
        if (directoryAt + 8 > file.optionalSize || !m_file.Read(optional + countAt, &count) ||
            count <= kResourceDirectory || !m_file.Read(optional + directoryAt, &address) || address == 0) {
            return false;
        }
        m_sections = optional + file.optionalSize;
        m_sectionCount = file.sections;
        return OffsetOf(address, &m_directory);
    }

    // Gets the offset in the file of an address in the loaded module.
    bool OffsetOf(std::uint32_t address, std::uint64_t* offset) const {
        for (unsigned i = 0; i < m_sectionCount; ++i) {
            Section section{};
            if (!m_file.Read(m_sections + std::uint64_t{i} * sizeof(section), &section)) {
                return false;
            }
            if (address >= section.address && address - section.address < section.rawSize) {
                *offset = std::uint64_t{section.rawOffset} + (address - section.address);
                return true;
            }
        }
        return false;
    }

    // Finds the entry with the first wanted number that exists; otherwise the first entry if any is
    // accepted.
    bool FindEntry(std::uint32_t folderOffset, std::initializer_list<std::uint32_t> wanted, bool anyWillDo,
                   Entry* found) const {
        const std::uint64_t at = m_directory + (folderOffset & ~kIsFolder);
        Folder folder{};
        if (!m_file.Read(at, &folder)) {
            return false;
        }
        const unsigned count =
            std::min<unsigned>(std::uint32_t{folder.named} + folder.numbered, kMostEntries);
        std::vector<Entry> entries(count);
        if (count == 0 || !m_file.Read(at + sizeof(folder), entries.data(), count * sizeof(Entry))) {
            return false;
        }
        for (const std::uint32_t number : wanted) {
            const auto entry = std::find_if(entries.begin(), entries.end(),
                                            [&](const Entry& each) { return each.number == number; });
            if (entry != entries.end()) {
                *found = *entry;
                return true;
            }
        }
        *found = entries.front();
        return anyWillDo;
    }

    bool FindData(Data* data) const {
        Entry kind{};
        Entry name{};
        Entry language{};
        return FindEntry(0, {kVersionResource}, false, &kind) && (kind.offset & kIsFolder) != 0 &&
               FindEntry(kind.offset, {1}, true, &name) && (name.offset & kIsFolder) != 0 &&
               FindEntry(name.offset, {kNeutral, kEnglishUs}, true, &language) &&
               (language.offset & kIsFolder) == 0 && m_file.Read(m_directory + language.offset, data);
    }

    const ModuleFile& m_file;
    std::uint64_t m_sections = 0;
    unsigned m_sectionCount = 0;
    std::uint64_t m_directory = 0;
};

} // namespace

std::vector<unsigned char> ReadPeVersionBlock(const ModuleFile& file) {
    return PeFile(file).VersionResource();
}

} // namespace krtpal::posix
