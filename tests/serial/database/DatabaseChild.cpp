// Writes trees to a database: `loop FILE` until it is killed, `times FILE NUMBER` so many, after which it
// prints how many were written and how many failed. Each write changes all of a tree.

#include "Tree.h"

#include "bss/exception/WNestedException.h"

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

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
    if (count < 3) {
        return 2;
    }
    bss::WDatabase database;
    database.ConnectFile(L"", L"", std::filesystem::path(arguments[2]).wstring());
    Tree tree(1, 1, 2);
    std::puts("ready");
    std::fflush(stdout);
    if (std::string(arguments[1]) == "loop") {
        for (long value = 1;; ++value) {
            Write(database, tree, value);
        }
    }
    int written = 0;
    int failed = 0;
    for (int i = 0; i < std::atoi(arguments[3]); ++i) {
        ++(Write(database, tree, i) ? written : failed);
    }
    std::printf("%d %d\n", written, failed);
    return 0;
}
