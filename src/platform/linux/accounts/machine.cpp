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
#include "platform/linux/samba/samba_places.h"
#include "platform/linux/samba/samba_questions.h"

namespace permora::host {

namespace {

// Ours alone, so that the machine's id cannot be found out from a SID that we show.
constexpr sd_id128_t kApplication =
    SD_ID128_ARRAY(7d, 2e, 0b, 61, 94, c3, 4f, 8a, b6, 15, e8, 43, d9, 70, 2c, 5f);

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

// The machine as Samba knows it; nothing when Samba has no databases here. Where the database of the
// machine's secrets is missing, its tools would make an identity up, so they are not run.
std::optional<Machine> AskSambaAboutMachine() {
    if (!FindTool("net")) return std::nullopt;
    const SambaPlaces& places = ThisMachinesSambaPlaces();
    const std::string database = places.privateFolder + "/secrets.tdb";
    const UniqueFd secrets(open(database.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    const bool isMissing = !secrets && (errno == ENOENT || errno == ENOTDIR);
    if (isMissing && places.error == ERROR_SUCCESS) return std::nullopt;

    Machine silent{RelativeIdSource::kHidden, std::nullopt, HostName(), {}};
    std::string answer;
    if (!secrets || AskSamba("net", {"getlocalsid"}, {}, answer) != ERROR_SUCCESS) return silent;
    const std::optional<SambaAccount> machine = ParseLocalSid(answer);
    if (!machine) return silent;
    return Machine{RelativeIdSource::kSamba, machine->sid, machine->name, places.guestAccount};
}

Machine FindMachine() {
    if (std::optional<Machine> machine = AskSambaAboutMachine()) return *std::move(machine);
    std::optional<nt::Sid> sid = ComputeMachineSid();
    return {sid ? RelativeIdSource::kComputed : RelativeIdSource::kNone, sid, HostName(), {}};
}

}  // namespace

const Machine& ThisMachine() {
    // Never destroyed: questions to servers may outlive everything else.
    static const Machine& machine = *new Machine(FindMachine());
    return machine;
}

}  // namespace permora::host
