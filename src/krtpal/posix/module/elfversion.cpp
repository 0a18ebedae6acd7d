// Reads the version block of an ELF module: a note of owner "krtbss" and type 1. It is found by the program
// headers, which stripping preserves.

#include "krtpal/posix/module/modulefile.h"

#include <cstring>
#include <elf.h>

namespace krtpal::posix {

namespace {

constexpr std::uint32_t kVersionNote = 1;
constexpr char kNoteOwner[] = "krtbss";
// Limits for damaged files, above those of every real module.
constexpr unsigned kMostHeaders = 1024;
constexpr std::uint64_t kMostNoteBytes = std::uint64_t{1} << 20;

constexpr std::uint64_t Padded(std::uint64_t size) {
    return (size + 3) & ~std::uint64_t{3};
}

// Returns the block from one segment of notes, whose sizes are rounded up to multiples of 4.
std::vector<unsigned char> FindInNotes(const ModuleFile& file, std::uint64_t offset, std::uint64_t size) {
    std::uint64_t at = 0;
    Elf32_Nhdr note{}; // equal for both widths
    while (size <= kMostNoteBytes && at + sizeof(note) <= size && file.Read(offset + at, &note)) {
        const std::uint64_t description = at + sizeof(note) + Padded(note.n_namesz);
        if (description + note.n_descsz > size) {
            break;
        }
        char owner[sizeof(kNoteOwner)] = {};
        if (note.n_type == kVersionNote && note.n_namesz == sizeof(kNoteOwner) &&
            file.Read(offset + at + sizeof(note), &owner) &&
            std::memcmp(owner, kNoteOwner, sizeof(owner)) == 0 && note.n_descsz <= kLargestVersionBlock) {
            std::vector<unsigned char> block(note.n_descsz);
            return file.Read(offset + description, block.data(), block.size()) ? block
                                                                               : std::vector<unsigned char>();
        }
        at = description + Padded(note.n_descsz);
    }
    return {};
}

template <class Header, class ProgramHeader>
std::vector<unsigned char> FindInModule(const ModuleFile& file) {
    Header header{};
    if (!file.Read(0, &header) || header.e_phentsize != sizeof(ProgramHeader) ||
        header.e_phnum > kMostHeaders) {
        return {};
    }
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        ProgramHeader segment{};
        if (!file.Read(header.e_phoff + std::uint64_t{i} * sizeof(segment), &segment)) {
            break;
        }
        if (segment.p_type == PT_NOTE) {
            std::vector<unsigned char> block = FindInNotes(file, segment.p_offset, segment.p_filesz);
            if (!block.empty()) {
                return block;
            }
        }
    }
    return {};
}

} // namespace

std::vector<unsigned char> ReadElfVersionBlock(const ModuleFile& file) {
    unsigned char identity[EI_NIDENT] = {};
    if (!file.Read(0, &identity) || std::memcmp(identity, ELFMAG, SELFMAG) != 0 ||
        identity[EI_DATA] != ELFDATA2LSB) {
        return {};
    }
    switch (identity[EI_CLASS]) {
    case ELFCLASS32:
        return FindInModule<Elf32_Ehdr, Elf32_Phdr>(file);
    case ELFCLASS64:
        return FindInModule<Elf64_Ehdr, Elf64_Phdr>(file);
    default:
        return {};
    }
}

} // namespace krtpal::posix
