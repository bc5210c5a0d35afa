#include "platform/linux/accounts/machine.h"

#include <fcntl.h>
#include <systemd/sd-id128.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>

#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/samba_output.h"
#include "platform/linux/base/run_tool.h"
#include "platform/linux/base/unique_fd.h"

namespace permora::host {

namespace {

// Ours alone, so that the machine's id cannot be found out from a SID that we show.
constexpr sd_id128_t kApplication =
    SD_ID128_ARRAY(7d, 2e, 0b, 61, 94, c3, 4f, 8a, b6, 15, e8, 43, d9, 70, 2c, 5f);

constexpr const char* kUsualPrivateFolder = "/var/lib/samba/private";

// The machine's id as a SID: 96 of its bits as the three numbers that tell machines apart. Bytes 6 and 8 of
// an id hold its variety and are the same everywhere, so they are not among them.
std::optional<nt::Sid> ComputeMachineSid() {
    sd_id128_t id{};
    if (sd_id128_get_machine_app_specific(kApplication, &id) < 0) return std::nullopt;
    std::array<std::uint32_t, 3> parts{};
    std::memcpy(parts.data(), &id.bytes[0], 6);
    std::memcpy(reinterpret_cast<std::uint8_t*>(parts.data()) + 6, &id.bytes[10], 6);
    return nt::Sid(5, {21, parts[0], parts[1], parts[2]});
}

// The name that Windows machines would know this one by: at most 15 characters, no domain.
std::string HostName() {
    constexpr std::size_t kLongest = 15;
    std::array<char, HOST_NAME_MAX + 1> buffer{};
    if (gethostname(buffer.data(), buffer.size() - 1) != 0) buffer[0] = '\0';
    const std::string_view whole(buffer.data());
    const std::string name = InUpperCase(whole.substr(0, whole.find('.')).substr(0, kLongest));
    return IsPlainAccountName(name) ? name : "LOCALHOST";
}

struct SambaSettings {
    std::string privateFolder = kUsualPrivateFolder;
    std::string guestAccount;
};

SambaSettings ReadSambaSettings() {
    SambaSettings settings;
    std::string listing;
    if (RunTool("testparm", {"-s", "-l", "-v"}, {}, listing) != ERROR_SUCCESS) return settings;
    const std::string folder = ParseGlobalParameter(listing, "private dir");
    if (folder.starts_with('/')) settings.privateFolder = folder;
    settings.guestAccount = ParseGlobalParameter(listing, "guest account");
    return settings;
}

// What Samba says of the machine; nothing when it has no databases here. Its tools make missing databases,
// and with them a new identity of the machine, when they are asked: so they are asked only where the database
// of the machine's secrets is there already.
std::optional<Machine> AskSamba() {
    if (!FindTool("net")) return std::nullopt;
    const SambaSettings settings = ReadSambaSettings();
    const std::string database = settings.privateFolder + "/secrets.tdb";
    const UniqueFd secrets(open(database.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!secrets && (errno == ENOENT || errno == ENOTDIR)) return std::nullopt;

    Machine silent{AccountSource::kHidden, std::nullopt, HostName(), {}};
    std::string answer;
    if (!secrets || RunTool("net", {"getlocalsid"}, {}, answer) != ERROR_SUCCESS) return silent;
    const std::optional<SambaAccount> machine = ParseLocalSid(answer);
    if (!machine) return silent;
    return Machine{AccountSource::kSamba, machine->sid, machine->name, settings.guestAccount};
}

Machine FindMachine() {
    if (std::optional<Machine> machine = AskSamba()) return *std::move(machine);
    std::optional<nt::Sid> sid = ComputeMachineSid();
    return {sid ? AccountSource::kComputed : AccountSource::kNone, sid, HostName(), {}};
}

}  // namespace

const Machine& ThisMachine() {
    static const Machine machine = FindMachine();
    return machine;
}

}  // namespace permora::host
