#include "platform/linux/samba/samba_questions.h"

namespace permora::host {

namespace {

// Options come first: everything after "--" is a name.
std::vector<std::string> WithOptions(std::vector<std::string> options,
                                     const std::vector<std::string>& arguments) {
    options.insert(options.end(), arguments.begin(), arguments.end());
    return options;
}

}  // namespace

DWORD MirrorSamba(SambaMirror& mirror) {
    const SambaPlaces& places = ThisMachinesSambaPlaces();
    DWORD error = places.error;
    if (error == ERROR_SUCCESS) error = mirror.Make();
    if (error == ERROR_SUCCESS) error = mirror.AddState(places.stateFolder);
    if (error == ERROR_SUCCESS) error = mirror.AddPrivate(places);
    return error;
}

DWORD AskSamba(const SambaMirror& mirror, const std::string& tool, const std::vector<std::string>& arguments,
               const ToolLimits& limits, std::string& answer, FailedOutput failedOutput) {
    return RunTool(tool, WithOptions(mirror.Options(), arguments), limits, answer, failedOutput);
}

DWORD AskSamba(const std::string& tool, const std::vector<std::string>& arguments, const ToolLimits& limits,
               std::string& answer, FailedOutput failedOutput) {
    if (!FindTool(tool)) return ERROR_FILE_NOT_FOUND;
    SambaMirror mirror;
    const DWORD error = MirrorSamba(mirror);
    return error == ERROR_SUCCESS ? AskSamba(mirror, tool, arguments, limits, answer, failedOutput) : error;
}

DWORD TellSambaOfLists(const std::string& tool, const std::vector<std::string>& arguments,
                       const ToolLimits& limits, std::string& answer) {
    if (!FindTool(tool)) return ERROR_FILE_NOT_FOUND;
    const SambaPlaces& places = ThisMachinesSambaPlaces();
    SambaMirror mirror;
    DWORD error = places.error;
    if (error == ERROR_SUCCESS) error = mirror.Make();
    if (error == ERROR_SUCCESS) error = mirror.AddPrivate(places);
    if (error != ERROR_SUCCESS) return error;
    return RunTool(tool, WithOptions(mirror.PrivateOptions(), arguments), limits, answer);
}

}  // namespace permora::host
