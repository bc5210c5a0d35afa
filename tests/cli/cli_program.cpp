#include "tests/cli/cli_program.h"

#include <nlohmann/json.hpp>

namespace permora::test {

std::string CliPath() {
    return PERMORA_CLI;
}

CommandResult RunCli(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {CliPath()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunCommand(command);
}

std::string EntriesOf(const std::string& path) {
    const CommandResult shown = RunCli({"show", "--json", path});
    const nlohmann::json object = nlohmann::json::parse(shown.output, nullptr, false);
    if (shown.exitCode != 0 || object.is_discarded()) return shown.output;
    std::string lines;
    for (const nlohmann::json& entry : object["entries"]) {
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
