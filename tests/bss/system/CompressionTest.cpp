#include "bss/system/WCompression.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "krtpal/text.h"
#include "support/DebugOutput.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#ifndef _WIN32
#include <sys/stat.h>
#include <thread>
#endif

using bss::WCompression;

namespace {

using Block = std::vector<unsigned char>;

/// The text of the failure that a call throws; "nothing" if it throws none.
std::wstring FailureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const bss::WNECompressionFile& failure) {
        return failure.GetArgument<0>();
    }
    return L"nothing";
}

/// By UTF-8: the standard library's own conversion from wide text depends on the locale.
std::filesystem::path PathOf(const std::wstring& path) {
    const std::string bytes = krtpal::Utf8FromWide(path);
    return {std::u8string(bytes.begin(), bytes.end())};
}

Block Noise(std::size_t size) {
    std::mt19937 generator(5);
    Block bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(generator()); });
    return bytes;
}

Block Packed(const Block& data) {
    unsigned long length = WCompression::CompressBound(static_cast<unsigned long>(data.size()));
    Block packed(length);
    WCompression::Compress(packed.data(), &length, data.data(), static_cast<unsigned long>(data.size()));
    packed.resize(length);
    return packed;
}

TEST(CompressionOfBlocks, StoresAndReturnsThem) {
    EXPECT_EQ(WCompression::CompressBound(0), WCompression::CompressBound(1));
    for (const std::size_t size : {0U, 1U, 65535U, 65536U, 1000000U}) {
        const Block data = Noise(size);
        const Block packed = Packed(data);
        Block back(size + 1);
        auto length = static_cast<unsigned long>(back.size());
        WCompression::Uncompress(back.data(), &length, packed.data(),
                                 static_cast<unsigned long>(packed.size()));
        back.resize(length);
        EXPECT_EQ(back, data);
    }
    EXPECT_GT(Packed(Block(1000)).size(), 1000U); // stored, not made smaller
}

TEST(CompressionOfBlocks, FailuresHaveTheirTexts) {
    const Block data(1000, 7);
    Block room(2000);
    unsigned long length = WCompression::CompressBound(1000) - 1;
    EXPECT_EQ(FailureOf([&] { WCompression::Compress(room.data(), nullptr, data.data(), 1000); }),
              L"Unable to compress data: destination buffer zero length.");
    EXPECT_EQ(FailureOf([&] { WCompression::Compress(room.data(), &length, data.data(), 1000); }),
              L"Unable to compress data: destination buffer too small.");
    ++length;
    EXPECT_EQ(FailureOf([&] { WCompression::Compress(nullptr, &length, data.data(), 1000); }),
              L"Cannot compress data.");

    const Block packed = Packed(data);
    Block damaged = packed;
    damaged[500] ^= 1;
    const Block cut(packed.begin(), packed.end() - 1);
    const auto uncompress = [&](const Block& source, unsigned long bytes) {
        length = bytes;
        return FailureOf([&] {
            WCompression::Uncompress(room.data(), bytes == 0 ? nullptr : &length, source.data(),
                                     static_cast<unsigned long>(source.size()));
        });
    };
    EXPECT_EQ(uncompress(packed, 1000), L"nothing");
    for (const std::wstring& text :
         {uncompress(packed, 0), uncompress(packed, 999), uncompress(damaged, 2000), uncompress(cut, 2000),
          uncompress(data, 2000)}) {
        EXPECT_EQ(text, L"Cannot uncompress data.");
    }
}

class CompressionOfFiles : public testing::Test {
protected:
    CompressionOfFiles() { std::filesystem::create_directories(m_folder); }
    ~CompressionOfFiles() override { std::filesystem::remove_all(m_folder); }

    std::wstring In(const std::wstring& name) const { return m_folder.wstring() + L"/" + name; }

    std::wstring Written(const std::wstring& name, const Block& bytes) const {
        std::ofstream file(PathOf(In(name)), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return In(name);
    }

    static Block Read(const std::wstring& path) {
        std::ifstream file(PathOf(path), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// How many descriptors the process has open; 0 on Windows, where an open file could not be removed.
    static std::ptrdiff_t OpenFiles() {
#ifdef _WIN32
        return 0;
#else
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
#endif
    }

    using Operation = void (*)(const std::wstring&, const std::wstring&);

    /// Runs what has to fail: with this text, this debug output, and all files closed.
    void ExpectFailure(Operation operation, const std::wstring& source, const std::wstring& target,
                       const std::wstring& text, const std::wstring& debugPrefix) {
        DebugOutput debug;
        const std::ptrdiff_t before = OpenFiles();
        EXPECT_EQ(FailureOf([&] { operation(source, target); }), text);
        EXPECT_EQ(OpenFiles(), before) << krtpal::Utf8FromWide(text);
        EXPECT_EQ(debug.Text(), debugPrefix == silent ? L"" : debugPrefix + text);
    }

    static constexpr const wchar_t* silent = L"silent";

private:
    std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() /
        (std::string("krtbss_compression_") + testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(CompressionOfFiles, ReturnsThemAndCopiesPlainOnes) {
    for (const std::size_t size : {0U, 1U, 16383U, 16384U, 16385U, 1000000U}) {
        const Block data = Noise(size);
        const std::wstring plain = Written(L"plain", data);
        const std::wstring packed = In(L"packed.gz");
        WCompression::CompressFile(plain, packed);
        const Block gzip = Read(packed);
        ASSERT_GE(gzip.size(), 20U);
        EXPECT_EQ(gzip[0], 0x1F);
        EXPECT_EQ(gzip[1], 0x8B);
        for (const std::wstring& source : {packed, plain}) {
            WCompression::UncompressFile(source, In(L"back"));
            EXPECT_EQ(Read(In(L"back")), data);
        }
    }
    const std::wstring zeros = Written(L"zeros", Block(1000000));
    WCompression::CompressFile(zeros, In(L"zeros.gz"));
    EXPECT_LT(std::filesystem::file_size(In(L"zeros.gz")), 2000U);
    // Both are closed: they can be removed.
    EXPECT_TRUE(std::filesystem::remove(zeros));
    EXPECT_TRUE(std::filesystem::remove(In(L"zeros.gz")));
}

TEST_F(CompressionOfFiles, TakesPathsThatHaveANarrowForm) {
    const Block data = Noise(100);
    const std::wstring plain = Written(L"\u00FC \u4E2D", data);
    const std::wstring packed = In(L"\u00FC.gz");
    if (krtpal::WidenText(krtpal::NarrowText(packed)) == packed) {
        WCompression::CompressFile(plain, packed);
        WCompression::UncompressFile(packed, In(L"back"));
        EXPECT_EQ(Read(In(L"back")), data);
    }
    // A lone surrogate has none anywhere, and a NUL would cut the path short.
    const std::wstring paths[] = {In(L"\xD800.gz"), Written(L"cut", data) + L'\0' + L".gz"};
    for (const std::wstring& path : paths) {
        const std::wstring begin = L"Cannot open file:" + path;
        const std::wstring end = L".\nError Message:  ";
        EXPECT_EQ(FailureOf([&] {
                      WCompression::CompressFile(plain, path);
                  }).find(begin + L" for compression" + end),
                  0U);
        EXPECT_EQ(FailureOf([&] {
                      WCompression::UncompressFile(path, In(L"back"));
                  }).find(begin + L" for uncompression" + end),
                  0U);
    }
    EXPECT_EQ(FailureOf([&] { WCompression::CompressFile(paths[1], packed); }),
              L"Failed to open compressed file.");
    EXPECT_EQ(FailureOf([&] { WCompression::UncompressFile(Written(L"ascii", data), paths[1]); }),
              L"Failed to open uncompression target file.");
    EXPECT_EQ(Read(In(L"cut")), data);
}

TEST_F(CompressionOfFiles, PlacesThatCannotBeReadOrWrittenFail) {
    const Block data = Noise(100);
    const std::wstring plain = Written(L"plain", data);
    const std::wstring packed = In(L"packed.gz");
    WCompression::CompressFile(plain, packed);
    const Block gzip = Read(packed);
    const std::wstring missing = In(L"missing/file");
    const std::wstring folder = In(L".");
    const std::wstring none = L"\nError Message:  No such file or directory";
    const std::wstring denied = L"\nError Message:  Permission denied";
#ifdef _WIN32
    const std::wstring isFolder = denied;
#else
    const std::wstring isFolder = L"\nError Message:  Is a directory";
#endif
    const Operation compress = &WCompression::CompressFile;
    const Operation uncompress = &WCompression::UncompressFile;
    const struct {
        Operation operation;
        const std::wstring& source;
        const std::wstring& target;
        std::wstring text;
        const wchar_t* debugPrefix;
    } rows[] = {
        {compress, missing, packed, L"Failed to open compressed file.", silent},
        {compress, folder, packed, L"Failed to open compressed file.", silent},
        {compress, plain, missing, L"Cannot open file:" + missing + L" for compression." + none,
         L"WCompression::CompressFile: "},
        {compress, plain, folder, L"Cannot open file:" + folder + L" for compression." + isFolder,
         L"WCompression::CompressFile: "},
        {compress, plain, plain, L"Cannot open file:" + plain + L" for compression." + denied,
         L"WCompression::CompressFile: "},
        {uncompress, missing, plain, L"Cannot open file:" + missing + L" for uncompression." + none,
         L"WCompression::UncompressFile: "},
        {uncompress, packed, missing, L"Failed to open uncompression target file.", silent},
        {uncompress, packed, folder, L"Failed to open uncompression target file.", silent},
        {uncompress, packed, packed, L"Failed to open uncompression target file.", silent},
    };
    for (const auto& row : rows) {
        ExpectFailure(row.operation, row.source, row.target, row.text, row.debugPrefix);
        EXPECT_EQ(Read(plain), data);
        EXPECT_EQ(Read(packed), gzip);
    }
    EXPECT_TRUE(std::filesystem::remove(plain));
    EXPECT_TRUE(std::filesystem::remove(packed));
}

TEST_F(CompressionOfFiles, CutAndDamagedOnesFail) {
    WCompression::CompressFile(Written(L"plain", Noise(300)), In(L"whole.gz"));
    const Block gzip = Read(In(L"whole.gz"));
    for (std::size_t size = 2; size < gzip.size(); size += 17) {
        const std::wstring cut =
            Written(L"cut.gz", Block(gzip.begin(), gzip.begin() + static_cast<long>(size)));
        ExpectFailure(&WCompression::UncompressFile, cut, In(L"back"),
                      L"Error closing compressed input file: \nError Message:  buffer error",
                      L"WCompression::UncompressFile:  ");
    }
    const std::pair<std::size_t, const wchar_t*> places[] = {{gzip.size() - 8, L"incorrect data check"},
                                                             {gzip.size() - 1, L"incorrect length check"},
                                                             {2, L"unknown compression method"}};
    for (const auto& [place, reason] : places) {
        Block bytes = gzip;
        bytes[place] ^= 0x55;
        const std::wstring damaged = Written(L"damaged.gz", bytes);
        ExpectFailure(&WCompression::UncompressFile, damaged, In(L"back"),
                      L"Cannot read file:" + damaged + L" during uncompression.\nError Message:  " + damaged +
                          L": " + reason,
                      L"");
    }
    EXPECT_TRUE(std::filesystem::remove(In(L"damaged.gz")));
    EXPECT_TRUE(std::filesystem::remove(In(L"back")));
}

#ifndef _WIN32

TEST_F(CompressionOfFiles, FullDisksAndReadErrorsAreNoticed) {
    const std::wstring full = L"/dev/full";
    if (!std::filesystem::exists(full)) {
        GTEST_SKIP() << "no /dev/full here";
    }
    const std::wstring little = Written(L"little", Noise(100));
    const std::wstring much = Written(L"much", Noise(1000000));
    const std::wstring noRoom = L"\nError Message:  No space left on device";
    const Operation compress = &WCompression::CompressFile;
    const Operation uncompress = &WCompression::UncompressFile;
    // What fits the buffers fails at the end.
    ExpectFailure(compress, little, full,
                  L"Error closing compressed output file: \nError Message:  file error",
                  L"WCompression::CompressFile:  ");
    ExpectFailure(compress, much, full, L"Cannot write file:/dev/full for compression." + noRoom, L"");
    ExpectFailure(uncompress, little, full, L"Error closing uncompressed output file: " + noRoom,
                  L"WCompression::UncompressFile:  ");
    ExpectFailure(uncompress, much, full,
                  L"Cannot write file:/dev/fullError writing uncompresed output file.", L"");

    // Its first page is never there.
    const std::wstring unreadable = L"/proc/self/mem";
    ExpectFailure(compress, unreadable, In(L"target"),
                  L"Cannot read file:/proc/self/mem during compression.\nError Message:  Input/output error",
                  L"");
    ExpectFailure(
        uncompress, unreadable, In(L"target"),
        L"Cannot read file:/proc/self/mem during uncompression.\nError Message:  Input/output error", L"");
}

TEST_F(CompressionOfFiles, UnderstandTheGzipProgramBothWays) {
    const Block data = Noise(100000);
    const std::wstring plain = Written(L"plain", data);
    const auto run = [this](const std::string& command) {
        return std::system(("cd '" + krtpal::Utf8FromWide(In(L".")) + "' && " + command).c_str());
    };
    WCompression::CompressFile(plain, In(L"ours.gz"));
    ASSERT_EQ(run("gzip -dc ours.gz | cmp - plain"), 0);
    // Several members one behind the other are one text.
    ASSERT_EQ(run("gzip -9c plain >theirs.gz && gzip -1c plain >>theirs.gz"), 0);
    WCompression::UncompressFile(In(L"theirs.gz"), In(L"back"));
    ASSERT_EQ(run("cat plain plain | cmp - back"), 0);
    WCompression::CompressFile(Written(L"empty", {}), In(L"empty.gz"));
    ASSERT_EQ(run("gzip -dc empty.gz | cmp - empty"), 0);
}

/// A line of /proc/self/status, in KiB.
long MemoryOf(const std::string& name) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line) && line.rfind(name + ":", 0) != 0) {
    }
    return status ? std::stol(line.substr(name.size() + 1)) : -1;
}

TEST_F(CompressionOfFiles, OfMoreThanTwoGibibytesNeedNoMoreMemory) {
    if (std::getenv("KRTBSS_TEST_LONG") == nullptr) {
        GTEST_SKIP() << "takes half a minute: set KRTBSS_TEST_LONG";
    }
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "takes minutes under a sanitizer, which needs memory of its own";
#endif
    constexpr std::uintmax_t size = (std::uintmax_t{2} << 30U) + 12345;
    std::filesystem::resize_file(Written(L"sparse", {}), size);
    // The uncompressed text goes through a pipe, where it is counted.
    const std::wstring pipe = In(L"pipe");
    ASSERT_EQ(mkfifo(krtpal::Utf8FromWide(pipe).c_str(), 0600), 0);

    std::ofstream("/proc/self/clear_refs") << "5"; // lets the peak begin anew
    const long before = MemoryOf("VmRSS");
    WCompression::CompressFile(In(L"sparse"), In(L"packed.gz"));
    std::uintmax_t zeros = 0;
    std::thread reader([&] {
        std::ifstream file(PathOf(pipe), std::ios::binary);
        static char buffer[65536];
        while (file.read(buffer, sizeof(buffer)), file.gcount() != 0) {
            zeros += static_cast<std::uintmax_t>(std::count(buffer, buffer + file.gcount(), 0));
        }
    });
    WCompression::UncompressFile(In(L"packed.gz"), pipe);
    reader.join();
    EXPECT_EQ(zeros, size);
    ASSERT_GT(before, 0);
    EXPECT_LT(MemoryOf("VmHWM") - before, 8 * 1024);
}

#else

TEST_F(CompressionOfFiles, FullDisksAndReadErrorsAreNoticed) {
    GTEST_SKIP() << "/dev/full and /proc are those of Linux";
}
TEST_F(CompressionOfFiles, UnderstandTheGzipProgramBothWays) {
    GTEST_SKIP() << "no gzip program on Windows";
}
TEST_F(CompressionOfFiles, OfMoreThanTwoGibibytesNeedNoMoreMemory) {
    GTEST_SKIP() << "sparse files and the peak of memory are those of Linux";
}

#endif

/// Reaches the texts.
class Texts : public WCompression {
public:
    using WCompression::GetError;
};

TEST(CompressionTexts, AreThoseOfTheCodes) {
    const std::wstring prefix = L"\nError Message:  ";
    const std::wstring noRoom = prefix + L"No space left on device";
    const wchar_t* const texts[] = {L"incompatible version",
                                    L"buffer error",
                                    L"insufficient memory",
                                    L"data error",
                                    L"stream error",
                                    L"file error",
                                    L"",
                                    L"stream end",
                                    L"need dictionary"};
    for (int code = -6; code <= 2; ++code) {
        EXPECT_EQ(Texts::GetError(code), prefix + texts[code + 6]);
    }
    for (const int code : {-7, 3}) {
        errno = ENOSPC;
        EXPECT_EQ(Texts::GetError(code), noRoom);
    }
    errno = ENOSPC;
    EXPECT_EQ(Texts::GetError(), noRoom);
    errno = ENOSPC;
    EXPECT_EQ(Texts::GetError(stdin), noRoom);
    errno = 0;
    EXPECT_EQ(Texts::GetError(), prefix + L"Out of memory.");
}

} // namespace
