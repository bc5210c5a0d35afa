#include "platform/linux/samba/samba_places.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/ascii.h"
#include "platform/linux/accounts/samba_output.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/run_tool.h"
#include "platform/linux/samba/samba_mirror.h"

namespace permora::host {

namespace {

// One parameter on its line or lines: a backslash at the end of a line continues it.
std::string_view TakeJoinedLine(std::string_view& text) {
    const std::string_view start = text;
    std::string_view line;
    do {
        line = WithoutOuterBlanks(TakeLine(text));
    } while (line.ends_with('\\') && !text.empty());
    return start.substr(0, start.size() - text.size());
}

// Samba ignores blanks and letter case.
std::string Bare(std::string_view text) {
    std::string bare = InLowerCase(text);
    std::erase_if(bare, [](char letter) {
        return letter == ' ' || letter == '\t' || letter == '\\' || letter == '\r' || letter == '\n';
    });
    return bare;
}

bool IsDropped(std::string_view line, Includes includes) {
    const std::size_t sign = line.find('=');
    if (sign == line.npos) return false;
    const std::string name = Bare(line.substr(0, sign));
    if (name == "registryshares" || name == "configbackend") return true;
    if (name == "configfile") return includes == Includes::kDropped;
    return name == "include" && (includes == Includes::kDropped || Bare(line.substr(sign + 1)) == "registry");
}

// The listing of all parameters; empty on failure.
std::string AskTestparm(const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"-s", "-l", "-v"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    std::string listing;
    RunTool("testparm", arguments, {}, listing);
    return listing;
}

// Samba creates the registry's database as soon as a configuration mentions it, perhaps in an included file.
// So the configuration is listed only after a check that it does not.
bool OpensRegistry(const SambaMirror& empty, const std::string& configuration) {
    std::vector<std::string> options = empty.Options();
    options.push_back(configuration);
    AskTestparm(options);
    std::error_code error;
    return std::filesystem::exists(empty.StateFolder() + "/registry.tdb", error);
}

bool IsInDomain(const std::string& listing) {
    const std::string security = InLowerCase(ParseGlobalParameter(listing, "security"));
    const std::string role = InLowerCase(ParseGlobalParameter(listing, "server role"));
    return security == "ads" || security == "domain" || role == "member server" ||
           role == "active directory domain controller";
}

DWORD WriteConfiguration(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    return file ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

std::string ReadConfiguration() {
    std::ifstream source(kSambaConfiguration, std::ios::binary);
    return {std::istreambuf_iterator<char>(source), std::istreambuf_iterator<char>()};
}

void TakeStateFolder(const std::string& listing, SambaPlaces& places) {
    const std::string told = ParseGlobalParameter(listing, "state directory");
    if (told.starts_with('/')) places.stateFolder = told;
}

void TakeOtherPlaces(const std::string& listing, SambaPlaces& places) {
    const std::string folder = ParseGlobalParameter(listing, "private dir");
    if (folder.starts_with('/')) places.privateFolder = folder;
    places.passwordFile = ParseGlobalParameter(listing, "smb passwd file");
    places.userDatabase = ParseGlobalParameter(listing, "passdb backend");
    places.guestAccount = ParseGlobalParameter(listing, "guest account");
    places.workgroup = ParseGlobalParameter(listing, "workgroup");
    places.isInDomain = IsInDomain(listing);
}

// Most machines have all in one file, in which nothing leads to the registry: one question tells all. False
// for other configurations. The tool reads a copy, since the file may be another one by then.
bool FindInOneFile(const std::string& text, SambaPlaces& places) {
    if (text.empty() || WithoutRegistry(text, Includes::kDropped) != text) return false;
    SambaMirror empty;
    const std::string copy = empty.Make() == ERROR_SUCCESS ? empty.Folder() + "/smb.conf" : std::string();
    if (copy.empty() || WriteConfiguration(copy, text) != ERROR_SUCCESS) return false;
    const std::string listing = AskTestparm({copy});
    TakeStateFolder(listing, places);
    TakeOtherPlaces(listing, places);
    return true;
}

// Leaves the folder unchanged if Samba does not name it.
DWORD FindStateFolder(const std::string& text, SambaPlaces& places) {
    for (const Includes includes : {Includes::kKept, Includes::kDropped}) {
        SambaMirror empty;
        if (const DWORD error = empty.Make(); error != ERROR_SUCCESS) return error;
        const std::string filtered = empty.Folder() + "/smb.conf";
        // A truncated path would name another folder.
        const DWORD error = WriteConfiguration(filtered, WithoutRegistry(text, includes));
        if (error != ERROR_SUCCESS) return error;
        if (OpensRegistry(empty, filtered)) continue;
        TakeStateFolder(AskTestparm({filtered}), places);
        break;
    }
    return ERROR_SUCCESS;
}

SambaPlaces FindPlaces() {
    SambaPlaces places;
    const std::string text = ReadConfiguration();
    if (FindInOneFile(text, places)) return places;
    places.error = FindStateFolder(text, places);
    // The registry may hold the other places.
    SambaMirror mirror;
    if (places.error == ERROR_SUCCESS) places.error = mirror.Make();
    if (places.error == ERROR_SUCCESS) places.error = mirror.AddState(places.stateFolder);
    if (places.error == ERROR_SUCCESS) TakeOtherPlaces(AskTestparm(mirror.Options()), places);
    return places;
}

}  // namespace

const SambaPlaces& ThisMachinesSambaPlaces() {
    // Never destroyed: a thread that looks for the domain may outlive the rest.
    static const SambaPlaces& places = *new SambaPlaces(FindPlaces());
    return places;
}

std::string WithoutRegistry(std::string_view configuration, Includes includes) {
    std::string kept;
    while (!configuration.empty()) {
        const std::string_view line = TakeJoinedLine(configuration);
        if (!IsDropped(line, includes)) kept += line;
    }
    return kept;
}

}  // namespace permora::host
