#include "tests/cli/cli_program.h"

#include "tests/support/project_folders.h"

namespace permora::test {

std::string CliPath() {
    return BuiltProgram("permora-cli");
}

CommandResult RunCli(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {CliPath()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunCommand(command);
}

nlohmann::json ResultsIn(const std::string& output) {
    const std::size_t start = output.find("{\n");
    const nlohmann::json document =
        nlohmann::json::parse(start == output.npos ? output : output.substr(start), nullptr, false);
    if (document.is_discarded() || document.value("version", 0) != 1 || !document.contains("command"))
        return nlohmann::json::value_t::discarded;
    return document["results"];
}

std::string EntriesOf(const std::string& path) {
    const CommandResult shown = RunCli({"show", "--json", path});
    const nlohmann::json objects = ResultsIn(shown.output);
    if (shown.exitCode != 0 || objects.size() != 1) return shown.output;
    std::string lines;
    for (const nlohmann::json& entry : objects[0]["entries"]) {
        lines += entry["type"].get<std::string>() + ' ' + entry["sid"].get<std::string>() + ' ' +
                 entry["mask"].get<std::string>() + ' ' + std::to_string(entry["flags"].get<int>()) + '\n';
    }
    return lines;
}

std::string SddlOf(const std::string& path) {
    return RunCli({"show", "--sddl", path}).output;
}

std::string CannotHoldListsReason(const std::string& folder) {
    const CommandResult shown = RunCli({"show", folder});
    return shown.output.find("not supported") == std::string::npos ? "" : shown.output;
}

}  // namespace permora::test
