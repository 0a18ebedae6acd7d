// Entry point: main where a command line is bytes, wmain where it is wide text (Windows), so that any file
// name comes in whole.

#include "common/Entry.h"

#ifdef _WIN32
#include "krtpal/common/text.h"

int wmain(int count, wchar_t** values) {
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(krtpal::Utf8FromWide(values[i]));
    }
    return tools::RunTool(arguments);
}
#else
int main(int count, char** values) {
    return tools::RunTool({values + (count > 0 ? 1 : 0), values + count});
}
#endif
