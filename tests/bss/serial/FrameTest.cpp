#include "bss/exception/WExceptionCatalogue.h"
#include "bss/module.h"
#include "bss/serial/WBinarySerializer.h"
#include "bss/serial/WPersistentObject.h"
#include "bss/serial/WVersion.h"
#include "bss/serial/database/WDatabase.h"
#include "bss/system/WIDDispenser.h"
#include "krtpal/error.h"
#include "krtpal/module.h"
#include "krtpal/sync.h"
#include "krtpal/time.h"
#include "support/DebugOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

using bss::WPersistentObject;
using bss::WVersion;

/// A binary serializer that notes the steps of its runs, and the group, object and angle of each object;
/// fails at the step that it is told to.
class Steps : public bss::WBinarySerializer {
public:
    Steps() : WBinarySerializer(false, true) {}

    using WBinarySerializer::Insert;
    using WBinarySerializer::Retrieve;
    void Insert(const std::wstring& label, long value) override {
        Step(label.back() == L'D' ? std::to_wstring(value) : label);
        WBinarySerializer::Insert(label, value);
    }
    void Insert(const std::wstring& label, short value) override {
        Step(label);
        WBinarySerializer::Insert(label, value);
    }
    void Retrieve(const std::wstring& label, short& value) override {
        WBinarySerializer::Retrieve(label, value);
        Step(label);
    }

    void PassFor(const WSerializer& other) { WSerializer::operator=(other); }
    /// The steps since the last call
    std::wstring Taken() { return std::exchange(m_steps, {}); }

    std::wstring failAt;
    std::function<void()> fail;

protected:
    void StartInsertion(WPersistentObject&) override { Step(L"start"); }
    void FinishInsertion(WPersistentObject&) override { Step(L"finish"); }
    void StartRetrieval(WPersistentObject&) override { Step(L"start-read"); }
    void FinishRetrieval() override { Step(L"finish-read"); }

private:
    void Step(const std::wstring& step) {
        m_steps += step + L" ";
        if (step == failAt) {
            fail();
        }
    }

    std::wstring m_steps;
};

/// A tree of objects with one member each
class Node : public WPersistentObject {
public:
    explicit Node(long objectID = 0, const WVersion& version = WVersion(5, 4, 0, 0))
        : WPersistentObject(1, objectID, version) {}

    void Serialize(bool bRead) override {
        WPersistentObject::Serialize(bRead);
        bRead ? m_pSerializer->Retrieve(L"angle", angle) : m_pSerializer->Insert(L"angle", angle);
    }
    void SerializeComponents(bool bRead) override {
        const auto run = bRead ? &Node::Read : &Node::Write;
        Each([&](Node& node) { (node.*run)(m_pSerializer, m_nVersion, true); });
    }
    void DeleteComponents() override {
        Each([&](Node& node) { node.Delete(m_pSerializer, m_nVersion, true); });
    }
    void SetComponentGroupID(long groupID) override {
        Each([&](Node& node) { node.SetGroupID(groupID); });
    }
    void AutosetComponentObjectID(bss::WIDDispenser& dispenser) override {
        Each([&](Node& node) { node.AutosetObjectID(dispenser); });
    }
    bss::WSerializer* Serializer() const { return m_pSerializer; }

    short angle = 0;
    std::vector<Node> components;

private:
    void Each(const std::function<void(Node&)>& call) {
        std::for_each(components.begin(), components.end(), call);
    }
};

/// root - branch - leaf, leaf; three levels
Node MakeTree() {
    Node root(10);
    root.components.emplace_back(20);
    root.components[0].components.emplace_back(30);
    root.components[0].components.emplace_back(31);
    return root;
}

template <class Call>
std::unique_ptr<bss::WNestedException> Catch(Call call) {
    try {
        call();
    } catch (const bss::WNestedException& e) {
        return std::unique_ptr<bss::WNestedException>(e.clone());
    }
    return nullptr;
}

std::wstring NamesOf(const bss::WNestedException* e) {
    std::wstring names;
    for (; e != nullptr; e = e->GetNextException()) {
        names += std::wstring(names.empty() ? L"" : L" ") + e->GetEventInfo().GetName();
    }
    return names;
}

std::wstring StepsOfObject(const wchar_t* ids) {
    return std::wstring(L"start m_nVersion ") + ids + L" angle finish ";
}

TEST(Frame, ComponentsAreWrittenAndReadBehindTheirOwner) {
    Node tree = MakeTree();
    Node& leaf = tree.components[0].components[1];
    tree.SetGroupID(7);
    bss::WIDDispenser ids(100);
    tree.AutosetObjectID(ids);
    leaf.angle = 90;

    Steps serializer;
    tree.Write(&serializer, 0, true);
    EXPECT_EQ(serializer.Taken(), StepsOfObject(L"7 101") + StepsOfObject(L"7 102") +
                                      StepsOfObject(L"7 103") + StepsOfObject(L"7 104"));
    EXPECT_EQ(leaf.Serializer(), nullptr);
    tree.Write(&serializer, 0, false);
    EXPECT_EQ(serializer.Taken(), StepsOfObject(L"7 101"));

    Node read = MakeTree();
    read.Read(&serializer, 0, true);
    EXPECT_EQ(read.components[0].components[1].GetObjectID(), 104);
    EXPECT_EQ(read.components[0].components[1].angle, 90);
    EXPECT_TRUE(read == tree);
    serializer.Taken();
    read.Read(&serializer, 0, false);
    EXPECT_EQ(serializer.Taken(), L"start-read angle finish-read ");
    EXPECT_TRUE(serializer.MoreToRead());
}

TEST(Frame, VersionInForceIsClampedAndDecidesOnFlags) {
    const bss::WDatabase database; // whose tables have no columns for the flags
    const long oldest = WVersion::GetVersion(5, 0, 0, 0);
    const long newest = WVersion::GetVersion(5, 4, 0, 0);
    const long withFlags = WVersion::GetVersion(5, 3, 0, 9);
    struct Case {
        long asked;
        long inForce;
        bool hasFlags;
    };
    const Case cases[] = {
        {0, newest, true},          {newest + 1, newest, true},   {-1, newest, true},
        {oldest - 1, newest, true}, {oldest, oldest, false},      {withFlags - 1, withFlags - 1, false},
        {newest, newest, true},     {withFlags, withFlags, true},
    };
    for (const Case& row : cases) {
        for (const bool isDatabase : {false, true}) {
            Steps serializer;
            if (isDatabase) {
                serializer.PassFor(database);
            }
            Node node;
            node.SetModified(true);
            node.Write(&serializer, row.asked, true);
            EXPECT_EQ(node.GetVersion(), row.inForce);
            Node read;
            read.Read(&serializer, row.asked, true);
            EXPECT_EQ(read.GetVersion(), row.inForce);
            EXPECT_EQ(read.GetModified(), row.hasFlags && !isDatabase) << row.asked;
        }
    }
}

TEST(Frame, NewerDataFailsWithTheUpgradeText) {
    Steps serializer;
    Node newer(5, WVersion(5, 4, 0, 1));
    newer.Write(&serializer, 0, false);
    Node older(5);
    const auto failure = Catch([&] { older.Read(&serializer, 0, false); });
    ASSERT_EQ(NamesOf(failure.get()), L"WNEDataIOError WNEDataIOError WNEDataIOError");
    const std::wstring wrapped =
        L"Data I/O Error: Could not read data.\nClass name: Node Group ID: 1 Object ID: 5\n\n"
        L"Data I/O Error: You have attempted to open a file or connect to an\ninstrument or resource that "
        L"requires an upgrade of your software.\nPlease contact Korvath Instruments to upgrade your "
        L"software.\n\n";
    EXPECT_EQ(
        failure->AsString(false),
        L"Data I/O Error: Unexpected serialization error: Serialize(read)\n\tWSerializer::DoSerialization "
        L"(Node)\n\n" +
            wrapped + L"\n" + wrapped);
    EXPECT_EQ(older.Serializer(), nullptr);
}

TEST(Frame, EveryFailureOfAStageIsWrapped) {
    struct Stage {
        bool isRead;
        const wchar_t* failAt;
        const wchar_t* name;
        bool failsAtFinish; // which is called once more then
    };
    // "angle" fails outside the base's Serialize, whose wrapping is another test's.
    const Stage stages[] = {
        {true, L"start-read", L"StartRetrieval", false},  {true, L"angle", L"Serialize(read)", false},
        {true, L"finish-read", L"FinishRetrieval", true}, {false, L"start", L"StartInsertion", false},
        {false, L"angle", L"Serialize(write)", false},    {false, L"finish", L"FinishInsertion", true},
    };
    struct Kind {
        void (*fail)();
        const wchar_t* names;
        const wchar_t* message;
        const wchar_t* debugBegin;
        const wchar_t* debugEnd;
    };
    const Kind kinds[] = {
        {[] { throw bss::WNEIndexOutOfRange(4); }, L"WNEDataIOError WNEIndexOutOfRange",
         L"Data I/O Error: Unexpected serialization error: ", L"Unexpected serialization error: ",
         L"\n\nIndex 4 out of range.\n\n"},
        {[] { throw std::runtime_error("disk on fire"); }, L"WNEUnexpectedException",
         L"description- disk on fire\n", L"Unexptected serializaton error: ", L"\n\ndisk on fire\n"},
        {[] { throw 5; }, L"WNEUnexpectedException", L"description- Unexpected serialization error.\n",
         L"Unexptected serializaton error: ", L"\n"},
    };
    for (const Stage& stage : stages) {
        for (const Kind& kind : kinds) {
            SCOPED_TRACE(testing::PrintToString(std::wstring(stage.name) + L" " + kind.names));
            Steps serializer;
            Node node;
            node.Write(&serializer, 0, true);
            serializer.Taken();
            serializer.failAt = stage.failAt;
            serializer.fail = kind.fail;
            DebugOutput output;
            const auto failure = Catch(
                [&] { stage.isRead ? node.Read(&serializer, 0, true) : node.Write(&serializer, 0, true); });
            ASSERT_EQ(NamesOf(failure.get()), kind.names);
            const std::wstring where = std::wstring(stage.name) + L"\n\tWSerializer::DoSerialization (Node)";
            EXPECT_EQ(output.Text(), kind.debugBegin + where + kind.debugEnd);
            const bool hasCause = failure->GetNextException() != nullptr;
            EXPECT_EQ(failure->AsString(true),
                      hasCause ? kind.message + where + kind.debugEnd : std::wstring(kind.message));
            const std::wstring finish = stage.isRead ? L"finish-read " : L"finish ";
            const std::wstring steps = serializer.Taken();
            EXPECT_EQ(steps.substr(steps.size() - finish.size()), finish);
            EXPECT_EQ(steps.find(finish + finish) != std::wstring::npos, stage.failsAtFinish);
            serializer.failAt.clear();
            serializer.SetIsValid(false);
            node.Write(&serializer, 0, true); // its lock is free
            EXPECT_TRUE(serializer.IsValid());
        }
    }
}

TEST(Frame, FailuresOfTheBaseMembersAreWrappedTwice) {
    Steps serializer;
    serializer.failAt = L"8";
    Node node(8);
    const std::wstring base =
        L"Data I/O Error: Could not write data.\nClass name: Node Group ID: 1 Object ID: 8\n\n";
    const std::pair<std::function<void()>, std::wstring> kinds[] = {
        {[] { throw bss::WNESerializerError(L"no room"); }, base + L"Serializer Error: no room\n"},
        {[] { throw std::bad_alloc(); }, base},
    };
    for (const auto& [fail, text] : kinds) {
        serializer.fail = fail;
        const auto failure = Catch([&] { node.Write(&serializer, 0, true); });
        EXPECT_EQ(failure->GetNextException()->AsString(false), text);
    }
}

TEST(Frame, AskingTheSerializerInsteadOfTheObjectFails) {
    Steps serializer;
    Node node;
    DebugOutput output;
    const std::wstring reason =
        L"Serializer Error: No serializer is set: call Read, Write or Delete of the object.\n";
    const std::wstring text = L"Unexpected serialization error.\n\n" + reason + L"\n\nNode::";
    EXPECT_EQ(Catch([&] { serializer.Write(node, true); })->AsString(false),
              L"Data I/O Error: " + text + L"WriteObject\n");
    EXPECT_EQ(output.Text(), text + L"WriteObject\n");
    EXPECT_EQ(Catch([&] { serializer.Read(node, true); })->AsString(false),
              L"Data I/O Error: " + text + L"ReadObject\n");
    EXPECT_EQ(Catch([&] { serializer.Delete(node, true); })->AsString(false), reason);
    EXPECT_TRUE(serializer.Taken().empty());
}

TEST(Frame, NullSerializerLeavesTheObjectAsItWas) {
    Node node(3);
    node.SetVersion(WVersion(5, 1, 0, 0));
    const Node before(node);
    node.Write(nullptr, 0, true);
    node.Read(nullptr, WVersion::GetVersion(5, 2, 0, 0), true);
    node.Delete(nullptr, 0, true);
    EXPECT_TRUE(node == before);
}

TEST(Frame, SerializerThatDeletesGetsObjectAndComponents) {
    struct Deleter : Steps {
        using WSerializer::Delete;
        void Delete(WPersistentObject& object, bool bRecursive) override {
            ids.push_back(object.GetObjectID());
            if (bRecursive) {
                object.DeleteComponents();
            }
        }
        std::vector<long> ids;
    } deleter;
    Node tree = MakeTree();
    tree.Delete(&deleter, 0, true);
    EXPECT_EQ(deleter.ids, (std::vector<long>{10, 20, 30, 31}));
    tree.Delete(&deleter, 0, false);
    EXPECT_EQ(deleter.ids.size(), 5U);
    EXPECT_EQ(tree.Serializer(), nullptr);
}

TEST(Frame, ObjectsCompareByEveryMemberOfTheBase) {
    const Node same(3);
    const std::function<void(Node&)> changes[] = {
        [](Node& n) { n.SetObjectID(4); },
        [](Node& n) { n.SetGroupID(4); },
        [](Node& n) { n.SetValid(false); },
        [](Node& n) { n.SetModified(true); },
        [](Node& n) { n.SetVersion(WVersion(5, 0, 0, 0)); },
        [](Node& n) {
            static_cast<WPersistentObject&>(n) = Node(3, WVersion(5, 0, 0, 0));
            n.SetVersion(WVersion(5, 4, 0, 0)); // so that the newest one alone differs
        },
    };
    for (const auto& change : changes) {
        Node other(3);
        EXPECT_TRUE(other == same && !(other != same));
        change(other);
        EXPECT_TRUE(other != same && !(other == same));
        other = same;
        EXPECT_TRUE(other == same);
    }
    EXPECT_EQ(same.clone(), nullptr);
}

template <class Value>
class Series : public WPersistentObject {
public:
    Series() : WPersistentObject(4, 5, WVersion(5, 4, 0, 0)) {}
};

TEST(Frame, ClassNamesLoseNamespacesAndArguments) {
    EXPECT_EQ(Series<int>().GetNameOfClass(), L"Series");
    EXPECT_EQ(Series<std::vector<std::wstring>>().GetNameOfClass(), L"Series");
    EXPECT_EQ(WPersistentObject(1, -2, WVersion()).GetIDInfo(),
              L"Class name: WPersistentObject Group ID: 1 Object ID: -2\n");
}

TEST(Frame, ThreadsThatShareASerializerTakeTurnsByObjects) {
    static std::atomic<int> inside;
    static std::atomic<bool> met;
    // Waits in the midst of its run for another run to come in.
    struct Waiter : Node {
        using Node::Node;
        void Serialize(bool bRead) override {
            ++inside;
            for (const ULONGLONG start = GetTickCount64(); inside < 2 && GetTickCount64() - start < 50;) {
                std::this_thread::yield();
            }
            met = met || inside > 1;
            Node::Serialize(bRead);
            --inside;
        }
    };
    Steps serializer;
    std::thread other([&serializer] { Waiter(1).Write(&serializer, 0, true); });
    Waiter(2).Write(&serializer, 0, true);
    other.join();
    EXPECT_FALSE(met);
    EXPECT_EQ(serializer.Taken().size(), 2 * StepsOfObject(L"1 1").size());
}

TEST(Frame, ObjectsSerializeOthersFromInsideTheirRun) {
    struct Outer : Node {
        void Serialize(bool bRead) override {
            Node::Serialize(bRead);
            SerializeComponents(bRead);
        }
    } outer;
    Steps serializer;
    outer.components.emplace_back(8);
    outer.Write(&serializer, 0, false);
    EXPECT_EQ(serializer.Taken(), L"start m_nVersion 1 0 angle " + StepsOfObject(L"1 8") + L"finish ");
}

TEST(Strings, AreLoadedFromTheModulesTable) {
    const wchar_t* whole = nullptr;
    wchar_t text[300] = {};
    const int length = LoadStringW(bss::GetBSSHandle(), 1001, reinterpret_cast<LPWSTR>(&whole), 0);
    EXPECT_EQ(LoadStringW(bss::GetBSSHandle(), 1001, text, 300), length);
    EXPECT_EQ(std::wstring(whole, static_cast<std::size_t>(length)), text);
    EXPECT_EQ(LoadStringW(bss::GetBSSHandle(), 1001, text, 5), 4);
    EXPECT_EQ(std::wstring(text), L"You ");
    EXPECT_EQ(LoadStringW(bss::GetBSSHandle(), 1002, text, 300), 0);
    EXPECT_EQ(LoadStringW(nullptr, 1001, text, 300), 0); // the program has none
}

} // namespace
