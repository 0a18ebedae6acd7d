// Names of objects, inside a process and between two.

#include "Support.h"

#include "support/ChildProcess.h"
#include "support/Expect.h"
#include "support/Wine.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

std::string Narrow(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

/// Files in the folders of shared memory that hold a name; on Windows there are none to look at.
std::vector<std::string> FilesLeftOf(const std::string& name) {
    std::vector<std::string> left;
    std::error_code error;
    constexpr auto options = std::filesystem::directory_options::skip_permission_denied;
    for (const auto& file : std::filesystem::recursive_directory_iterator("/dev/shm", options, error)) {
        if (file.path().filename().string().starts_with(name)) {
            left.push_back(file.path().string());
        }
    }
    return left;
}

TEST(Names, SecondHandleIsToTheSameObjectWhichLivesAsLongAsAny) {
    const std::wstring name = OwnName(L"same");
    const auto open = [&] { return OpenEventW(EVENT_ALL_ACCESS, FALSE, name.c_str()); };
    EXPECT_FAILS(open(), ERROR_FILE_NOT_FOUND);
    Handle first = AutoEvent(false, name.c_str());
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    Handle second = ManualEvent(true, (L"Local\\" + name).c_str());
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_EQ(Poll(first), WAIT_TIMEOUT); // the arguments of the second did not count
    Handle opened = open();
    first.Close();
    SetEvent(second);
    second.Close();
    EXPECT_EQ(Poll(opened), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(opened), WAIT_TIMEOUT);
    opened.Close();
    EXPECT_EQ(FilesLeftOf(Narrow(name)), std::vector<std::string>{});
    EXPECT_FAILS(open(), ERROR_FILE_NOT_FOUND);

    const Handle owned = Mutex(true, name.c_str()); // the name is free for other kinds, too
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    const Handle notOwned = Mutex(true, name.c_str());
    EXPECT_TRUE(ReleaseMutex(notOwned)); // owned once, through either handle
    EXPECT_FALSE(ReleaseMutex(owned));
}

TEST(Names, BelongToOneKind) {
    const std::wstring name = OwnName(L"kind");
    const auto check = [&](auto call, bool opens) {
        const Handle handle = call();
        EXPECT_EQ(handle != nullptr, opens);
        EXPECT_TRUE(opens || GetLastError() == ERROR_INVALID_HANDLE) << GetLastError();
    };
    for (int kind = 0; kind < 3; ++kind) {
        SCOPED_TRACE(kind);
        const wchar_t* const text = name.c_str();
        const Handle object = kind == 0   ? AutoEvent(false, text)
                              : kind == 1 ? Mutex(false, text)
                                          : Semaphore(0, 1, text);
        check([=] { return AutoEvent(false, text); }, kind == 0);
        check([=] { return Mutex(false, text); }, kind == 1);
        check([=] { return Semaphore(0, 1, text); }, kind == 2);
        check([=] { return OpenEventW(EVENT_ALL_ACCESS, FALSE, text); }, kind == 0);
        check([=] { return OpenMutexW(MUTEX_ALL_ACCESS, FALSE, text); }, kind == 1);
        check([=] { return OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, text); }, kind == 2);
    }
}

TEST(Names, AnyTextIsANameOfItsOwn) {
    const std::wstring base = OwnName(L"");
    const std::wstring many = base + std::wstring(200, L'x');
    std::vector<std::wstring> names = {many + L"1", many + L"2", L"Global\\" + base + L"a"};
    for (const wchar_t* const end :
         {L"a", L"A", L"a b/c%d.*?", L"a b_c%25d.*?", L"..", L"\u00e4\u4e2d", L"\U0001F600"}) {
        names.push_back(base + end);
    }
    std::vector<Handle> handles;
    for (const std::wstring& name : names) {
        // Wine has one space for both prefixes.
        const bool sameInWine = RunsUnderWine() && name.rfind(L"Global", 0) == 0;
        handles.push_back(AutoEvent(false, name.c_str()));
        ASSERT_NE(static_cast<HANDLE>(handles.back()), nullptr) << Narrow(name) << ' ' << GetLastError();
        EXPECT_TRUE(GetLastError() == ERROR_SUCCESS || sameInWine) << Narrow(name);
        const Handle again = OpenEventW(EVENT_ALL_ACCESS, FALSE, name.c_str());
        EXPECT_NE(static_cast<HANDLE>(again), nullptr) << Narrow(name);
    }
    const Handle unnamed = AutoEvent(false, L"");
    const Handle alsoUnnamed = AutoEvent(false, L"");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);

    EXPECT_FAILS(CreateEventW(nullptr, FALSE, FALSE, (L"Local\\" + base + L"folder\\b").c_str()),
                 ERROR_PATH_NOT_FOUND);
    EXPECT_FAILS(OpenEventW(EVENT_ALL_ACCESS, FALSE, nullptr), ERROR_INVALID_PARAMETER);
}

TEST(Processes, ShareEventsAndSemaphores) {
    const std::wstring name = OwnName(L"two");
    const Handle semaphore = Semaphore(0, 3, (name + L"-s").c_str());
    const Handle answer = AutoEvent(false, (name + L"-e").c_str());
    ChildProcess child(SYNC_CHILD, {"answer", Narrow(name)});
    ASSERT_EQ(child.ReadLine(), "open");
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(ReleaseSemaphore(semaphore, 1, nullptr));
        EXPECT_EQ(WaitForSingleObject(answer, kLongMs), WAIT_OBJECT_0);
    }
    EXPECT_EQ(child.Wait(), 0);
    EXPECT_EQ(Poll(semaphore), WAIT_TIMEOUT);
}

TEST(Processes, MutexOfAKilledOneIsAbandoned) {
    const std::wstring name = OwnName(L"killed");
    const Handle mutex = Mutex(false, name.c_str());
    for (const bool waits : {false, true}) {
        ChildProcess child(SYNC_CHILD, {"hold", Narrow(name)});
        ASSERT_EQ(child.ReadLine(), "held");
        EXPECT_EQ(WaitForSingleObject(mutex, kShortMs), WAIT_TIMEOUT);
        std::jthread killer([&] {
            Sleep(waits ? kSettleMs : 0);
            child.Kill(); // the waiter below notices although nobody has waited for the child
        });
        if (!waits) {
            killer.join();
            EXPECT_EQ(child.Wait(), ChildProcess::killed);
        }
        EXPECT_EQ(WaitForSingleObject(mutex, waits ? kLongMs : 1000), WAIT_ABANDONED) << waits;
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
}

/// A process that waits on an event and a semaphore of these names.
class Waiting {
public:
    explicit Waiting(const std::wstring& name)
        : event(AutoEvent(false, (name + L"-e").c_str())), semaphore(Semaphore(0, 5, (name + L"-s").c_str())),
          child(SYNC_CHILD, {"wait", Narrow(name)}) {
        EXPECT_EQ(child.ReadLine(), "waiting");
        Sleep(kSettleMs);
    }
    const Handle event;
    const Handle semaphore;
    ChildProcess child;
};

TEST(Processes, SignalsDoNotGoToTheDead) {
    std::vector<std::unique_ptr<Waiting>> dead;
    for (int i = 0; i < 3; ++i) {
        dead.push_back(std::make_unique<Waiting>(OwnName(L"ghost")));
        dead.back()->child.Kill();
        dead.back()->child.Wait();
    }
    const HANDLE event = dead[0]->event;
    const HANDLE semaphore = dead[0]->semaphore;
    SetEvent(event);
    SetEvent(event);
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(event), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseSemaphore(semaphore, 2, nullptr));
    EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(semaphore), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(semaphore), WAIT_TIMEOUT);
}

#ifdef _WIN32
SKIPPED_TEST(Processes, SignalsWaitForAWaiterThatIsStopped, "the system takes a stopped thread from its wait")
SKIPPED_TEST(Processes, FolderThatOthersMayWriteIsRefused, "the system keeps names in no folder")
#else
TEST(Processes, SignalsWaitForAWaiterThatIsStopped) {
    Waiting waiting(OwnName(L"stopped"));
    waiting.child.Stop();
    EXPECT_TRUE(SetEvent(waiting.event));
    EXPECT_TRUE(ReleaseSemaphore(waiting.semaphore, 2, nullptr));
    EXPECT_EQ(Poll(waiting.event), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(waiting.semaphore), WAIT_OBJECT_0); // nobody waited for the second unit
    EXPECT_EQ(Poll(waiting.semaphore), WAIT_TIMEOUT);
    waiting.child.Continue();
    EXPECT_EQ(waiting.child.Wait(), 0); // it took the event and left the unit
    EXPECT_EQ(Poll(waiting.event), WAIT_TIMEOUT);
    EXPECT_EQ(Poll(waiting.semaphore), WAIT_OBJECT_0);
}

TEST(Processes, FolderThatOthersMayWriteIsRefused) {
    ChildProcess child(SYNC_CHILD, {"distrust", "name"});
    const std::string answer = child.ReadLine();
    if (answer == "no namespace") {
        GTEST_SKIP() << "a process of this user can't have a /dev/shm of its own";
    }
    EXPECT_EQ(answer, "");
    EXPECT_EQ(child.Wait(), 0);
}
#endif

TEST(Processes, KilledAtAnyMomentLeaveNamesThatWork) {
    const long count = CountFrom("KRTBSS_TEST_KILLS", 60, 600); // fewer where processes start slowly
    const std::string name = Narrow(OwnName(L"crash"));
    std::mt19937 random(7);
    std::uniform_int_distribution<int> microseconds(0, 4000);
    for (long i = 0; i < count; ++i) {
        // Every third round two at once, which find each other's objects.
        ChildProcess child(SYNC_CHILD, {"work", name});
        std::unique_ptr<ChildProcess> second(i % 3 == 0 ? new ChildProcess(SYNC_CHILD, {"work", name})
                                                        : nullptr);
        ASSERT_EQ(child.ReadLine(), "working");
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        child.Kill();
        ChildProcess newcomer(SYNC_CHILD, {"check", name}); // also while the first is being torn down
        if (second) {
            second->Kill();
        }
        EXPECT_EQ(newcomer.Wait(), 0) << "round " << i;
    }
    ChildProcess last(SYNC_CHILD, {"check", name});
    EXPECT_EQ(last.Wait(), 0);
    const std::wstring wide(name.begin(), name.end());
    EXPECT_EQ(OpenMutexW(MUTEX_ALL_ACCESS, FALSE, (wide + L"-m").c_str()), nullptr);
    EXPECT_EQ(OpenEventW(EVENT_ALL_ACCESS, FALSE, (wide + L"-e").c_str()), nullptr);
    EXPECT_EQ(OpenSemaphoreW(SEMAPHORE_ALL_ACCESS, FALSE, (wide + L"-s").c_str()), nullptr);
    EXPECT_EQ(FilesLeftOf(name), std::vector<std::string>{});
}

} // namespace
