#include "Program.h"

#include "Arguments.h"
#include "Connection.h"
#include "Export.h"
#include "Inspect.h"
#include "Text.h"
#include "Verify.h"
#include "common/Failure.h"
#include "common/WriteFile.h"

#include <algorithm>
#include <optional>

namespace krtstore {

using tools::Failure;
using tools::PathOf;

namespace {

std::vector<Table> ChosenTables(Connection& connection, const std::vector<std::string>& names) {
    std::vector<Table> tables = connection.Tables();
    if (names.empty()) {
        return tables;
    }
    std::vector<Table> chosen;
    for (const std::string& name : names) {
        const auto found = std::find_if(tables.begin(), tables.end(),
                                        [wide = Wide(name)](const Table& each) { return each.name == wide; });
        if (found == tables.end()) {
            throw Failure("There is no table " + Quote(name) + " in " + connection.Name() + ".");
        }
        chosen.push_back(*found);
    }
    return chosen;
}

int RunVerify(Connection& connection, const Arguments& arguments, std::ostream& output,
              std::ostream* terminal) {
    const std::vector<Table> tables = ChosenTables(connection, arguments.tables);
    for (const Table& table : tables) {
        if (!arguments.tables.empty() && !table.IsOfStore()) {
            throw Failure("Table " + Quote(table.name) +
                          " is none of the store's: nothing in it can be tested.");
        }
    }
    const Findings findings = Verify(connection, tables, output, terminal);
    output << Count(findings.rows, "row") << ", " << Count(findings.faults, "fault") << '\n';
    return findings.faults == 0 ? kSound : kFaultsFound;
}

// The database in the place of the export would be lost.
void RefuseToOverwrite(const Arguments& arguments) {
    std::error_code ignored;
    if (!arguments.file.empty() && !arguments.output.empty() &&
        std::filesystem::equivalent(PathOf(arguments.file), PathOf(arguments.output), ignored)) {
        throw Failure("The export would overwrite the database " + Quote(arguments.file) + ".");
    }
}

void RunExport(Connection& connection, const Arguments& arguments, std::ostream& output) {
    const std::vector<Table> tables = ChosenTables(connection, arguments.tables);
    if (arguments.output.empty()) {
        Export(connection, tables, output);
    } else {
        tools::WriteWhole(arguments.output, [&](std::ostream& file) { Export(connection, tables, file); });
    }
}

int RunCommand(const Arguments& arguments, std::ostream& output, std::ostream* terminal) {
    RefuseToOverwrite(arguments);
    Connection connection(arguments);
    int status = kSound;
    switch (arguments.command) {
    case Command::List:
        List(connection, output);
        break;
    case Command::Show:
        Show(connection, ChosenTables(connection, arguments.tables).front(),
             {arguments.group, arguments.object}, output);
        break;
    case Command::Verify:
        status = RunVerify(connection, arguments, output, terminal);
        break;
    case Command::Export:
        RunExport(connection, arguments, output);
        break;
    }
    if (!(output << std::flush)) {
        throw Failure("The result cannot be written to the output.");
    }
    return status;
}

} // namespace

int Run(const std::vector<std::string>& arguments, std::ostream& output, std::ostream& errors,
        bool hasTerminal) noexcept {
    Arguments parsed;
    try {
        parsed = ParseArguments(arguments);
        if (parsed.help) {
            output << HelpText() << std::flush;
            return kSound;
        }
        return RunCommand(parsed, output, hasTerminal ? &errors : nullptr);
    } catch (const Failure& failure) {
        errors << (parsed.verbose ? failure.Chain() : "") << "krtstore: " << failure.what() << std::endl;
    } catch (const std::exception& failure) {
        errors << "krtstore: " << failure.what() << std::endl;
    }
    return kNotDone;
}

} // namespace krtstore
