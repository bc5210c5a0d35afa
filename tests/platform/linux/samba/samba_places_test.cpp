#include "platform/linux/samba/samba_places.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/command.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::host::test {
namespace {

using permora::test::CannotMountReason;
using permora::test::EnterOwnMounts;
using permora::test::FolderContents;
using permora::test::HaveOwnFolder;
using permora::test::InAnotherProcess;
using permora::test::MissingProgram;
using permora::test::ReadWholeFile;
using permora::test::TemporaryFolder;

constexpr const char* kTool = "/usr/bin/testparm";

void Write(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

// From here on each start of Samba's tool is a line in `log`.
std::string CountQuestions(const TemporaryFolder& folder, const std::string& log) {
    const std::string tool = folder.Path("testparm");
    const std::string counting = folder.Path("counting");
    std::filesystem::copy_file(kTool, tool);
    Write(counting, "#!/bin/sh\necho asked >> " + log + "\nexec " + tool + " \"$@\"\n");
    chmod(counting.c_str(), 0755);
    return mount(counting.c_str(), kTool, nullptr, MS_BIND, nullptr) == 0 ? "" : "cannot replace the tool";
}

// What is found where the configuration says this, in a process of its own, and with how many questions.
std::string PlacesIn(const std::string& configuration, const std::string& included) {
    return InAnotherProcess([&] {
               const TemporaryFolder folder;
               const std::string log = folder.Path("log");
               std::string problem = EnterOwnMounts();
               if (problem.empty()) problem = HaveOwnFolder("/etc/samba", FolderContents::kNone);
               if (problem.empty()) problem = CountQuestions(folder, log);
               if (!problem.empty()) return problem;
               Write(kSambaConfiguration, configuration);
               Write("/etc/samba/more.conf", included);
               const SambaPlaces& places = ThisMachinesSambaPlaces();
               const std::string asked = ReadWholeFile(log);
               umount2(kTool, MNT_DETACH);
               return places.workgroup + ' ' + places.stateFolder + ' ' + places.privateFolder +
                      (places.isInDomain ? " member, " : " alone, ") +
                      std::to_string(std::ranges::count(asked, '\n')) + " questions";
           })
        .value_or("no answer");
}

TEST(SambaPlaces, AreFoundWithOneQuestionWhereTheConfigurationIsOneFile) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    if (const std::string reason = MissingProgram("testparm"); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder state;
    const std::string all = "workgroup = ONE\nstate directory = " + state.Path() +
                            "\nprivate dir = /var/lib/secret\nsecurity = ads\nrealm = ONE.TEST\n";
    const std::string found = "ONE " + state.Path() + " /var/lib/secret member, ";
    EXPECT_EQ(PlacesIn("[global]\n" + all, ""), found + "1 questions");
    EXPECT_EQ(PlacesIn("[global]\ninclude = /etc/samba/more.conf\n", all), found + "3 questions");
    EXPECT_EQ(PlacesIn("[global]\n" + all + "Registry Shares = yes\n", ""), found + "3 questions");
}

}  // namespace
}  // namespace permora::host::test
