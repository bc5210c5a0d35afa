// What the names of a domain's accounts add to the rows of lists. Prints a row of the table in README.md.
// Runs on the member of a domain with kAccounts users more: tests/support/domain.sh run --users 200.
#include <chrono>
#include <cstddef>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "bench/measure.h"
#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/raw_security.h"
#include "security/access_entry_list.h"
#include "security/access_rows.h"
#include "tests/support/access_lists.h"
#include "tests/support/domain_member.h"

namespace {

using permora::bench::Check;
using permora::bench::Runs;
using permora::bench::Scaled;
using permora::bench::SecondsFor;

constexpr std::size_t kObjects = 10'000;
constexpr std::size_t kAccounts = 200;
constexpr std::size_t kFirstLocalUser = 20'000;

std::string PathOf(const std::string& kind, std::size_t object) {
    return std::string(permora::test::kSharedFolder) + '/' + kind + std::to_string(object);
}

std::string NameOf(std::size_t account) {
    std::ostringstream name;
    name << "local" << std::setw(5) << std::setfill('0') << account;
    return name.str();
}

// Users of the member alone, whose names are as long as those of the domain's. /etc is the test domain's own.
void AddLocalUsers() {
    std::ofstream file("/etc/passwd", std::ios::app);
    for (std::size_t account = 0; account < kAccounts; ++account)
        file << NameOf(account) << ":x:" << kFirstLocalUser + account << ":65534::/:/bin/false\n";
}

std::string LocalSid(std::size_t account) {
    return "S-1-22-1-" + std::to_string(kFirstLocalUser + account);
}

std::string DomainsSid(std::size_t account) {
    return permora::test::DomainSid(permora::test::kDora + 1 + static_cast<unsigned>(account));
}

bool MakeObjects(const std::string& kind, std::string (*sidOf)(std::size_t), std::size_t objects) {
    for (std::size_t object = 0; object < objects; ++object) {
        std::ofstream(PathOf(kind, object)) << "";
        const std::string list = "D:P(A;;FA;;;" + sidOf(object % kAccounts) + ")";
        if (permora::test::SetDescriptorText(PathOf(kind, object), list) != ERROR_SUCCESS) return false;
    }
    return true;
}

// Returns how many rows show a name of `domain`.
std::size_t Render(const std::string& kind, const std::string& domain, std::size_t objects) {
    std::size_t named = 0;
    for (std::size_t object = 0; object < objects; ++object) {
        permora::HeldObject held;
        permora::ReadParts parts;
        if (permora::HeldObject::Hold(PathOf(kind, object), held) != ERROR_SUCCESS ||
            held.ReadSecurity(DACL_SECURITY_INFORMATION, parts) != ERROR_SUCCESS) {
            continue;
        }
        permora::AccessEntryList list(permora::AcesOf(parts.dacl));
        for (const permora::AccessRow& row : permora::AccessRowsOf(list, permora::AccountDisplayName))
            if (row.name.starts_with(domain)) ++named;
    }
    return named;
}

void Compare() {
    const std::size_t objects = Scaled(kObjects);
    AddLocalUsers();
    if (!Check(MakeObjects("local", LocalSid, objects) && MakeObjects("domain", DomainsSid, objects),
               "cannot make the files"))
        return;
    // The first round asks the domain.
    for (int round = 0; round < 100 && Render("domain", "EXAMPLE\\", objects) < objects; ++round)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::vector<double> ours;
    std::vector<double> local;
    std::size_t named = 0;
    const int runs = Runs(7);
    for (int run = 0; run < runs; ++run) {
        local.push_back(SecondsFor([&] { named += Render("local", "Unix User\\", objects); }));
        ours.push_back(SecondsFor([&] { named += Render("domain", "EXAMPLE\\", objects); }));
    }
    Check(named == 2 * static_cast<std::size_t>(runs) * objects, "names are missing");
    permora::bench::PrintRatio(
        {"lists with 200 accounts of a domain", "a member's share, " + std::to_string(objects) + " objects",
         "200 accounts of its own"},
        ours, local, 1.5);
}

}  // namespace

int main(int argc, char** argv) {
    permora::bench::Begin(argc, argv);
    const std::string reason = permora::test::NotOnDomainMemberReason();
    if (Check(reason.empty(), reason)) Compare();
    return permora::bench::ExitCode();
}
