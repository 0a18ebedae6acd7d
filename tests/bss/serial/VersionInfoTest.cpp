#include "bss/exception/WExceptionCatalogue.h"
#include "bss/module.h"
#include "bss/serial/WBinarySerializer.h"
#include "bss/serial/WVersionInfo.h"
#include "bss/system/WVersionResource.h"
#include "krtpal/common/text.h"
#include "krtpal/module.h"
#include "krtpal/process.h"
#include "krtpal/sync.h"
#include "support/ChildProcess.h"
#include "support/Hex.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

using bss::WVersion;
using bss::WVersionInfo;

std::wstring Name(const std::string& path) {
    return std::filesystem::path(path).filename().wstring();
}

WVersionInfo MakeTree() {
    WVersionInfo root(L"Control.exe");
    root.SetVersion(5, 3, 2, 0);
    root.SetDescriptor(L"root");
    root.SetKRTIOVersion(L"5.3.0.9");
    WVersionInfo part(L"part.dll");
    part.SetModuleVersion(L"3.1.2.7");
    part.AddComponent(WVersionInfo(7, 8, 9, 300));
    root.AddComponent(part);
    root.AddComponent(WVersionInfo(L"last.dll"));
    return root;
}

TEST(VersionInfo, NumbersAndTextsGoTheirOwnWays) {
    WVersionInfo info(1, 2, 3, 4);
    info.SetVersion(5, 6, 7, 8);
    EXPECT_EQ(info.GetVersionString() + L" " + info.GetVersionExW(), L"5.6.7.8 1.2.3.4");
    EXPECT_EQ(info.GetVersion(), WVersion::GetVersion(5, 6, 7, 8));
    info.SetName(L"a.dll");
    info.SetName(nullptr);
    info.SetDescriptor(L"free");
    info.SetDateString(L"today");
    EXPECT_EQ(info.GetName() + info.GetDescriptor() + info.GetDateString(), L"a.dllfreetoday");
    info.SetModuleVersion(L"3.1.2.7");
    info.SetKRTFileVersion(L".1.2");
    info.SetKRTIOVersion(L"5,3.0,9");
    EXPECT_STREQ(info.GetModuleVersion().GetVersionExW(), L"3.1.2.7");
    EXPECT_STREQ(info.GetKRTFileVersion().GetVersionExW(), L"0.0.0.0");
    EXPECT_STREQ(info.GetKRTIOVersion().GetVersionExW(), L"5.3.0.9");
    info.AddComponent(info);
    info.Clear();
    EXPECT_EQ(info.GetVersionString() + info.GetName() + info.GetDescriptor() + info.GetDateString(),
              L"0.0.0.0");
    EXPECT_EQ(info.GetModuleVersionString(), L"3.1.2.7");
    ASSERT_EQ(info.GetComponents().size(), 1U);
    EXPECT_EQ(info.GetComponents()[0].GetDescriptor(), L"free");
}

TEST(VersionInfo, TreeIsPrintedByTabs) {
    const WVersionInfo tree = MakeTree();
    EXPECT_EQ(WVersionInfo::GetVersionInfo(tree, 2), L"\t\tControl.exe  5.3.2.0  5.3.0.9\n"
                                                     L"\t\t\tpart.dll  0.0.0.0  \n"
                                                     L"\t\t\t\t  7.8.9.300  \n"
                                                     L"\t\t\tlast.dll  0.0.0.0  \n");
    WVersionInfo copy;
    copy = tree;
    EXPECT_EQ(WVersionInfo::GetVersionInfo(copy, 0), WVersionInfo::GetVersionInfo(tree, 0));
    copy.DeleteComponents();
    EXPECT_TRUE(copy.GetComponents().empty());
    EXPECT_EQ(tree.GetComponents().size(), 2U);
}

TEST(VersionInfo, TreeIsWrittenAndRead) {
    WVersionInfo tree = MakeTree();
    bss::WBinarySerializer writer(false, true);
    tree.Write(&writer, 0, true);
    bss::WBinarySerializer reader(writer.GetBuffer(), true);
    WVersionInfo read(L"to be replaced");
    read.SetDateString(L"to be emptied");
    read.AddComponent(WVersionInfo(L"to be dropped"));
    read.Read(&reader, 0, true);
    EXPECT_TRUE(reader.MoreToRead());
    EXPECT_EQ(WVersionInfo::GetVersionInfo(read, 0), WVersionInfo::GetVersionInfo(tree, 0));
    EXPECT_EQ(read.GetDescriptor() + read.GetDateString(), L"root");
    EXPECT_EQ(read.GetComponents()[0].GetModuleVersionString(), L"3.1.2.7");
    EXPECT_STREQ(read.GetVersionExW(), L"0.0.0.0"); // not stored, not made anew
}

/// The image of an object without components, and a count of them
std::string ImageWithCount(int count) {
    WVersionInfo info;
    bss::WBinarySerializer writer(false, false);
    info.Write(&writer, 0, false);
    writer.Insert(L"", static_cast<long>(count));
    return writer.GetBuffer();
}

TEST(VersionInfo, CountsOfComponentsThatLieAreHarmless) {
    WVersionInfo read;
    for (const int count : {-1, 15'339'169}) {
        bss::WBinarySerializer reader(ImageWithCount(count), false);
        EXPECT_THROW(read.Read(&reader, 0, true), std::length_error) << count;
    }
    bss::WBinarySerializer many(ImageWithCount(15'339'168), false);
    read.Read(&many, 0, true);
    EXPECT_FALSE(many.MoreToRead());
    EXPECT_LE(read.GetComponents().size(), 1U);

    std::string deep;
    const std::string level = ImageWithCount(1);
    for (int i = 0; i < 100'000; ++i) {
        deep += level;
    }
    bss::WBinarySerializer nested(deep, false);
    EXPECT_THROW(read.Read(&nested, 0, true), bss::WNEDataIOError);
}

TEST(VersionInfo, OfAModuleComesFromItsResource) {
    const bss::WVersionResource resource(bss::GetBSSHandle());
    const WVersionInfo info = WVersionInfo::GetVersionInfo(GetVersionInfoModuleHandle());
    EXPECT_NE(info.GetName().find(L"krtbss"), std::wstring::npos);
    EXPECT_EQ(info.GetName().find_first_of(L"/\\"), std::wstring::npos);
    EXPECT_FALSE(info.GetModuleVersionString().empty());
    EXPECT_EQ(info.GetModuleVersionString(), resource.GetModuleVersion());
    EXPECT_EQ(info.GetDateString(), resource.GetFileCreationDate());
    EXPECT_EQ(info.GetVersionString(), L"0.0.0.0");
    const WVersionInfo program = WVersionInfo::GetVersionInfo(static_cast<HINSTANCE>(nullptr));
    EXPECT_EQ(program.GetName().substr(0, 12), L"serial_tests"); // which has no resource
    EXPECT_TRUE(program.GetModuleVersionString().empty());
}

TEST(VersionInfo, OfThisProcessHasTheModulesThatTakePart) {
    WVersionInfo info;
    info.AddProcessVersionInfo(GetCurrentProcessId());
    ASSERT_EQ(info.GetComponents().size(), 1U);
    EXPECT_NE(info.GetComponents()[0].GetName().find(L"krtbss"), std::wstring::npos);
    ASSERT_NE(LoadLibraryW(krtpal::WidenText(VERSION_INFO_PLUGIN).c_str()), nullptr);
    info.AddProcessVersionInfo(GetCurrentProcessId());
    ASSERT_EQ(info.GetComponents().size(), 3U);
    const WVersionInfo& plugin = info.GetComponents()[2];
    EXPECT_EQ(plugin.GetName(), Name(VERSION_INFO_PLUGIN));
    EXPECT_STREQ(plugin.GetModuleVersion().GetVersionExW(), L"1.2.3.4");
    EXPECT_STREQ(plugin.GetKRTFileVersion().GetVersionExW(), L"5.3.2.0");
    EXPECT_EQ(plugin.GetKRTIOVerionString(), L"5.3.0.9");
}

std::string NumberOf(ChildProcess& child) {
    const std::string line = child.ReadLine();
    EXPECT_EQ(line.substr(0, 6), "ready ");
    return line.substr(6);
}

std::vector<std::string> List(const std::vector<std::string>& arguments) {
    ChildProcess lister(VERSION_INFO_CHILD, arguments);
    std::vector<std::string> lines;
    for (std::string line; (line = lister.ReadLine()) != "end" && !line.empty();) {
        lines.push_back(line);
    }
    EXPECT_EQ(lister.Wait(), 0);
    return lines;
}

TEST(VersionInfo, OfAnotherProcessNeedsTheSameProgram) {
    ChildProcess full(VERSION_INFO_CHILD, {"wait", VERSION_INFO_PLUGIN});
    ChildProcess bare(VERSION_INFO_CHILD, {"wait"});
    const std::string fullNumber = NumberOf(full);
    const std::string bareNumber = NumberOf(bare);
    const std::string plugin = krtpal::NarrowText(Name(VERSION_INFO_PLUGIN)) + " 1.2.3.4 5.3.2.0 5.3.0.9";

    auto lines = List({"list", fullNumber, VERSION_INFO_PLUGIN});
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_NE(lines[0].find("krtbss"), std::string::npos);
    EXPECT_EQ(lines[1], plugin);
    lines = List({"list", bareNumber, VERSION_INFO_PLUGIN}); // which has not loaded the module
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].find("krtbss"), std::string::npos);

    WVersionInfo info;
    info.AddProcessVersionInfo(std::stoul(fullNumber)); // this is another program
    info.AddProcessVersionInfo(0);
    full.Kill();
    full.Wait();
    EXPECT_TRUE(info.GetComponents().empty());
    EXPECT_TRUE(List({"list", fullNumber}).empty());
}

} // namespace
