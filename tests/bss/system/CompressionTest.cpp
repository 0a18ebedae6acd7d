#include "bss/system/WCompression.h"

#include "bss/exception/WExceptionCatalogue.h"
#include "krtpal/common/text.h"
#include "support/DebugOutput.h"
#include "support/Expect.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
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

    /// What has to fail: the text; whether it is debug output too, and what stands in front of it there.
    struct Failure {
        decltype(&WCompression::CompressFile) operation;
        std::wstring source;
        std::wstring target;
        std::wstring text;
        std::optional<std::wstring> debugPrefix;
    };
    /// Runs it, and looks whether all files were closed.
    static void Expect(const Failure& failure) {
        DebugOutput debug;
        const std::ptrdiff_t before = OpenFiles();
        EXPECT_EQ(FailureOf([&] { failure.operation(failure.source, failure.target); }), failure.text);
        EXPECT_EQ(OpenFiles(), before) << krtpal::Utf8FromWide(failure.text);
        EXPECT_EQ(debug.Text(), failure.debugPrefix ? *failure.debugPrefix + failure.text : L"");
    }

    static constexpr auto compress = &WCompression::CompressFile;
    static constexpr auto uncompress = &WCompression::UncompressFile;
    static constexpr const wchar_t* compressing = L"WCompression::CompressFile: ";
    static constexpr const wchar_t* uncompressing = L"WCompression::UncompressFile: ";
    static constexpr const wchar_t* message = L"\nError Message:  ";

private:
    std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() /
        (std::string("krtbss_compression_") + testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(CompressionOfFiles, ReturnsThemAndCopiesPlainOnes) {
    const std::wstring packed = In(L"packed.gz");
    for (const std::size_t size : {0U, 1U, 16383U, 16384U, 16385U, 100000U}) {
        const Block data = Noise(size);
        const std::wstring plain = Written(L"plain", data);
        compress(plain, packed);
        EXPECT_EQ(Read(packed)[0], 0x1F);
        for (const std::wstring& source : {packed, plain}) {
            uncompress(source, In(L"back"));
            EXPECT_EQ(Read(In(L"back")), data);
        }
    }
    compress(Written(L"zeros", Block(1000000)), packed);
    EXPECT_LT(std::filesystem::file_size(packed), 2000U);
    EXPECT_TRUE(std::filesystem::remove(packed)); // closed
}

TEST_F(CompressionOfFiles, TakesPathsThatHaveANarrowForm) {
    const Block data = Noise(100);
    const std::wstring plain = Written(L"\u00FC \u4E2D", data);
    const std::wstring packed = In(L"\u00FC.gz");
    if (krtpal::WidenText(krtpal::NarrowText(packed)) == packed) {
        compress(plain, packed);
        uncompress(packed, In(L"back"));
        EXPECT_EQ(Read(In(L"back")), data);
    }
    // A lone surrogate has none anywhere, and a NUL would cut the path short.
    const std::wstring paths[] = {In(L"\xD800.gz"), Written(L"cut", data) + L'\0' + L".gz"};
    for (const std::wstring& path : paths) {
        const std::wstring begin = L"Cannot open file:" + path;
        EXPECT_TRUE(
            FailureOf([&] { compress(plain, path); }).starts_with(begin + L" for compression." + message));
        EXPECT_TRUE(FailureOf([&] {
                        uncompress(path, In(L"back"));
                    }).starts_with(begin + L" for uncompression." + message));
    }
    Expect({compress, paths[1], packed, L"Failed to open compressed file.", {}});
    Expect({uncompress, Written(L"plain", data), paths[1], L"Failed to open uncompression target file.", {}});
    EXPECT_EQ(Read(In(L"cut")), data);
}

TEST_F(CompressionOfFiles, PlacesThatCannotBeReadOrWrittenFail) {
    const Block data = Noise(100);
    const std::wstring plain = Written(L"plain", data);
    const std::wstring packed = In(L"packed.gz");
    compress(plain, packed);
    const Block gzip = Read(packed);
    const std::wstring missing = In(L"missing/file");
    const std::wstring folder = In(L".");
    const std::wstring denied = std::wstring(message) + L"Permission denied";
#ifdef _WIN32
    const std::wstring isFolder = denied;
#else
    const std::wstring isFolder = std::wstring(message) + L"Is a directory";
#endif
    const std::wstring none = std::wstring(message) + L"No such file or directory";
    const std::wstring noSource = L"Failed to open compressed file.";
    const std::wstring noTarget = L"Failed to open uncompression target file.";
    const std::wstring begin = L"Cannot open file:";
    const std::wstring end = L" for compression.";
    for (const Failure& failure : std::initializer_list<Failure>{
             {compress, missing, packed, noSource, {}},
             {compress, folder, packed, noSource, {}},
             {compress, plain, missing, begin + missing + end + none, compressing},
             {compress, plain, folder, begin + folder + end + isFolder, compressing},
             {compress, plain, plain, begin + plain + end + denied, compressing},
             {uncompress, missing, plain, begin + missing + L" for uncompression." + none, uncompressing},
             {uncompress, packed, missing, noTarget, {}},
             {uncompress, packed, folder, noTarget, {}},
             {uncompress, packed, packed, noTarget, {}},
         }) {
        Expect(failure);
        EXPECT_EQ(Read(plain), data);
        EXPECT_EQ(Read(packed), gzip);
    }
    EXPECT_TRUE(std::filesystem::remove(plain) && std::filesystem::remove(packed)); // closed
}

TEST_F(CompressionOfFiles, CutAndDamagedOnesFail) {
    const std::wstring bad = In(L"bad.gz");
    compress(Written(L"plain", Noise(300)), bad);
    const Block gzip = Read(bad);
    for (std::size_t size = 2; size < gzip.size(); size += 17) {
        Written(L"bad.gz", Block(gzip.begin(), gzip.begin() + static_cast<long>(size)));
        Expect({uncompress, bad, In(L"back"),
                L"Error closing compressed input file: \nError Message:  buffer error",
                L"WCompression::UncompressFile:  "});
    }
    const std::pair<std::size_t, const wchar_t*> places[] = {{gzip.size() - 8, L"incorrect data check"},
                                                             {gzip.size() - 1, L"incorrect length check"},
                                                             {2, L"unknown compression method"}};
    for (const auto& [place, reason] : places) {
        Block bytes = gzip;
        bytes[place] ^= 0x55;
        Expect({uncompress, Written(L"bad.gz", bytes), In(L"back"),
                L"Cannot read file:" + bad + L" during uncompression." + message + bad + L": " + reason,
                L""});
    }
    EXPECT_TRUE(std::filesystem::remove(bad) && std::filesystem::remove(In(L"back"))); // closed
}

#ifdef _WIN32

SKIPPED_TEST_F(CompressionOfFiles, FullDisksAndReadErrorsAreNoticed, "/dev/full and /proc are those of Linux")
SKIPPED_TEST_F(CompressionOfFiles, UnderstandTheGzipProgramBothWays, "no gzip program on Windows")
SKIPPED_TEST_F(CompressionOfFiles, OfMoreThanTwoGibibytesNeedNoMoreMemory,
               "sparse files and the peak of memory are those of Linux")

#else

TEST_F(CompressionOfFiles, FullDisksAndReadErrorsAreNoticed) {
    const std::wstring full = L"/dev/full";
    if (!std::filesystem::exists(full)) {
        GTEST_SKIP() << "no /dev/full here";
    }
    const std::wstring little = Written(L"little", Noise(100));
    const std::wstring much = Written(L"much", Noise(1000000));
    const std::wstring unreadable = L"/proc/self/mem"; // its first page is never there
    const std::wstring noRoom = std::wstring(message) + L"No space left on device";
    const std::wstring noRead = std::wstring(message) + L"Input/output error";
    // What fits the buffers fails at the end.
    Expect({compress, little, full, L"Error closing compressed output file: \nError Message:  file error",
            L"WCompression::CompressFile:  "});
    Expect({compress, much, full, L"Cannot write file:/dev/full for compression." + noRoom, L""});
    Expect({uncompress, little, full, L"Error closing uncompressed output file: " + noRoom,
            L"WCompression::UncompressFile:  "});
    Expect(
        {uncompress, much, full, L"Cannot write file:/dev/fullError writing uncompresed output file.", L""});
    Expect({compress, unreadable, In(L"to"), L"Cannot read file:/proc/self/mem during compression." + noRead,
            L""});
    Expect({uncompress, unreadable, In(L"to"),
            L"Cannot read file:/proc/self/mem during uncompression." + noRead, L""});
}

TEST_F(CompressionOfFiles, UnderstandTheGzipProgramBothWays) {
    const std::wstring plain = Written(L"plain", Noise(100000));
    const auto run = [this](const std::string& command) {
        return std::system(("cd '" + krtpal::Utf8FromWide(In(L".")) + "' && " + command).c_str());
    };
    compress(plain, In(L"ours.gz"));
    ASSERT_EQ(run("gzip -dc ours.gz | cmp - plain"), 0);
    // Several members one behind the other are one text.
    ASSERT_EQ(run("gzip -9c plain >theirs.gz && gzip -1c plain >>theirs.gz"), 0);
    uncompress(In(L"theirs.gz"), In(L"back"));
    ASSERT_EQ(run("cat plain plain | cmp - back"), 0);
    compress(Written(L"empty", {}), In(L"empty.gz"));
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
    compress(In(L"sparse"), In(L"packed.gz"));
    std::uintmax_t zeros = 0;
    std::thread reader([&] {
        std::ifstream file(PathOf(pipe), std::ios::binary);
        static char buffer[65536];
        while (file.read(buffer, sizeof(buffer)), file.gcount() != 0) {
            zeros += static_cast<std::uintmax_t>(std::count(buffer, buffer + file.gcount(), 0));
        }
    });
    uncompress(In(L"packed.gz"), pipe);
    reader.join();
    EXPECT_EQ(zeros, size);
    ASSERT_GT(before, 0);
    EXPECT_LT(MemoryOf("VmHWM") - before, 8 * 1024);
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
    std::wstring texts;
    for (int code = -6; code <= 2; ++code) {
        ASSERT_TRUE(Texts::GetError(code).starts_with(prefix));
        texts += Texts::GetError(code).substr(prefix.size()) + L"; ";
    }
    EXPECT_EQ(texts, L"incompatible version; buffer error; insufficient memory; data error; stream error; "
                     L"file error; ; stream end; need dictionary; ");
    errno = 0;
    EXPECT_EQ(Texts::GetError(), prefix + L"Out of memory.");
    errno = ENOSPC;
    EXPECT_EQ(Texts::GetError(-7) + Texts::GetError(3), noRoom + noRoom);
    EXPECT_EQ(Texts::GetError() + Texts::GetError(stdin), noRoom + noRoom);
}

} // namespace
