// Writes trees to a database, KIND being "file" or "source":
//
//     loop KIND NAME FIRST           until it is killed or a write fails; each write changes all of tree 1,
//     to
//                                    FIRST, FIRST + 1, ...
//     times KIND NAME NUMBER FIRST   so many times tree 1, with the values FIRST, FIRST + 1, ..., and as
//                                    often a new bush of that number
//
// `times` prints how many writes there were and how many failed, the value that tree 1 was last written with,
// and how many bushes were written.

#include "Tree.h"

#include "bss/exception/WNestedException.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

/// For the sanitizer: PostgreSQL's driver loses what the server has answered to a statement that failed.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() {
    return "leak:psqlodbcw.so";
}

namespace {

/// Has a table of its own.
class Bush : public Tree {
public:
    explicit Bush(long object) : Tree(object, 0, 0) {}
};

bool Write(bss::WDatabase& database, Tree& tree, long value) {
    tree.SetAll(value);
    try {
        tree.Write(&database, 0, true);
        return true;
    } catch (const bss::WNestedException&) {
        return false;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count < 5) {
        return 2;
    }
    bss::WDatabase database;
    const std::wstring name = std::filesystem::path(arguments[3]).wstring();
    std::string(arguments[2]) == "file" ? database.ConnectFile(L"", L"", name)
                                        : database.Connect(L"", L"", name);
    Tree tree(1, 1, 2);
    std::puts("ready");
    std::fflush(stdout);
    if (std::string(arguments[1]) == "loop") {
        // Not for ever, should nobody be there to kill it.
        const long end = std::atol(arguments[4]) + 100'000;
        for (long value = end - 100'000; value < end && Write(database, tree, value); ++value) {
        }
        return 1;
    }
    int written = 0;
    int failed = 0;
    int added = 0;
    long last = 0;
    const long first = std::atol(arguments[5]);
    for (long value = first; value < first + std::atol(arguments[4]); ++value) {
        const bool isWritten = Write(database, tree, value);
        ++(isWritten ? written : failed);
        last = isWritten ? value : last;
        Bush bush(value);
        const bool isAdded = Write(database, bush, value);
        ++(isAdded ? written : failed);
        added += isAdded ? 1 : 0;
    }
    std::printf("%d %d %ld %d\n", written, failed, last, added);
    return 0;
}
