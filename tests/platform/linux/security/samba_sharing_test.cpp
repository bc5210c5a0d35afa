// One folder, two programs: a real Samba server understands the lists of this program, and the other way
// round.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <optional>
#include <string>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/sddl.h"
#include "platform/nt/security_descriptor.h"
#include "tests/support/access_lists.h"
#include "tests/support/samba_fixture.h"

namespace permora::test {
namespace {

constexpr SECURITY_INFORMATION kAllButSacl =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

class SambaSharing : public WithSambaServer {
  protected:
    // Samba's view of an object of the share.
    static std::optional<nt::SecurityDescriptor> Samba(const std::string& name) {
        return Parsed(server->Smbcacls(name, {"--sddl"}).output);
    }
    static std::optional<nt::SecurityDescriptor> SambaOnPlainShare(const std::string& name) {
        return Parsed(server->SmbcaclsOnPlainShare(name, {"--sddl"}).output);
    }
    // This program's view of it.
    static std::optional<nt::SecurityDescriptor> Ours(const std::string& name) {
        return Parsed(DescriptorText(server->Path(name), kAllButSacl));
    }
    // The last line of a text: smbcacls may have complained in others.
    static std::optional<nt::SecurityDescriptor> Parsed(std::string text) {
        while (!text.empty() && text.back() == '\n')
            text.pop_back();
        const std::string sddl = text.substr(text.rfind('\n') + 1);
        auto descriptor = nt::FromSddl(sddl);
        EXPECT_TRUE(descriptor) << sddl;
        return descriptor;
    }
};

TEST_F(SambaSharing, WhatIsWrittenHereSambaReadsEntryForEntryOnBothKindsOfShare) {
    ASSERT_EQ(mkdir(server->Path("written").c_str(), 0755), 0);
    for (const char* sddl :
         {"O:BAG:BUD:P(D;;WD;;;BG)(A;OICI;FA;;;BA)(A;OICIIO;GA;;;CO)(A;;0x1200a9;;;WD)",
          "O:S-1-5-21-7-8-9-1004G:BUD:P(A;OINP;FR;;;S-1-5-21-7-8-9-1004)", "O:BAG:BUD:P"}) {
        ASSERT_EQ(SetDescriptorText(server->Path("written"), sddl), ERROR_SUCCESS) << sddl;
        EXPECT_EQ(Samba("written"), Ours("written")) << sddl;
        EXPECT_EQ(SambaOnPlainShare("written"), Ours("written")) << sddl;
    }
}

TEST_F(SambaSharing, WhatSambaWritesIsReadHereEntryForEntryFromBothKindsOfShare) {
    ASSERT_EQ(server->Smbclient("mkdir theirs").exitCode, 0);
    const CommandResult set = server->Smbcacls(
        "theirs",
        {"--sddl", "-S", "O:BAG:BUD:PAI(D;;WD;;;BG)(A;OICI;0x1f01ff;;;BA)(A;OICIIO;0x1200a9;;;WD)"});
    ASSERT_EQ(set.exitCode, 0) << set.output;
    EXPECT_EQ(DaclText(server->Path("theirs")), "D:P(D;;WD;;;BG)(A;OICIIO;0x1200a9;;;WD)(A;OICI;FA;;;BA)")
        << "in the order in which smbcacls sorts entries";
    EXPECT_EQ(Ours("theirs"), Samba("theirs"));
    ASSERT_EQ(server->SmbcaclsOnPlainShare("theirs", {"-a", "ACL:S-1-5-32-545:0/0x3/0x001200a9"}).exitCode,
              0);
    EXPECT_EQ(Ours("theirs"), SambaOnPlainShare("theirs"));
}

// Samba hands on generic rights as they are where the system maps them, so there are none in this list.
TEST_F(SambaSharing, ObjectsThatSambaMakesInheritWhatThisLayerComputes) {
    ASSERT_EQ(mkdir(server->Path("parent").c_str(), 0755), 0);
    ASSERT_EQ(SetDescriptorText(server->Path("parent"),
                                "D:P(D;CINP;WD;;;BG)(A;OI;FR;;;WD)(A;OICI;FA;;;BA)(A;OICIIO;FA;;;CO)"
                                "(A;CIIO;FR;;;CG)(A;OINPIO;FW;;;BU)"),
              ERROR_SUCCESS);
    ASSERT_EQ(server->Smbclient("mkdir parent\\folder; put /etc/hostname parent\\file").exitCode, 0);
    const auto parent = Ours("parent");
    ASSERT_TRUE(parent);
    struct {
        const char* name;
        nt::ObjectKind kind;
    } const children[] = {{"parent/folder", nt::ObjectKind::kFolder}, {"parent/file", nt::ObjectKind::kFile}};
    for (const auto& child : children) {
        const auto made = Ours(child.name);
        ASSERT_TRUE(made && made->owner && made->group) << child.name;
        const nt::SecurityDescriptor expected =
            nt::NewObjectDescriptor(*parent, child.kind, *made->owner, *made->group);
        EXPECT_EQ(made->dacl, expected.dacl)
            << child.name << " has " << nt::ToSddl(*made, kAllButSacl).value_or("?") << "\nexpected "
            << nt::ToSddl(expected, kAllButSacl).value_or("?");
    }
}

TEST_F(SambaSharing, ChangesReachAllBelowAsWithSambasOwnTool) {
    for (const std::string top : {"ours", "peers"}) {
        for (const char* folder : {"", "/a", "/a/b", "/shielded", "/shielded/c"})
            ASSERT_EQ(mkdir(server->Path(top + folder).c_str(), 0755), 0);
        ASSERT_EQ(SetDescriptorText(server->Path(top), "O:BAG:BUD:P(A;OICI;FA;;;BA)"), ERROR_SUCCESS);
        ASSERT_EQ(SetDescriptorText(server->Path(top + "/shielded"), "O:BAG:BUD:P(A;OICI;FA;;;SY)"),
                  ERROR_SUCCESS);
        ASSERT_EQ(SetDescriptorText(server->Path(top + "/a/b"), "O:BAG:BUD:(A;;FR;;;BU)"), ERROR_SUCCESS);
    }
    ASSERT_EQ(SetDescriptorText(server->Path("ours"), "D:P(A;OICI;FR;;;WD)(A;OICI;FA;;;BA)"), ERROR_SUCCESS);
    const CommandResult peer =
        server->Smbcacls("peers", {"-a", "ACL:S-1-1-0:0/0x3/0x00120089", "--propagate-inheritance"});
    ASSERT_EQ(peer.exitCode, 0) << peer.output;
    for (const std::string name : {"/a", "/a/b", "/shielded", "/shielded/c"}) {
        const auto ours = Ours("ours" + name);
        const auto peers = Ours("peers" + name);
        ASSERT_TRUE(ours && peers) << name;
        EXPECT_TRUE(std::is_permutation(ours->dacl.entries.begin(), ours->dacl.entries.end(),
                                        peers->dacl.entries.begin(), peers->dacl.entries.end()))
            << name << "\n"
            << DaclText(server->Path("ours" + name)) << "\n"
            << DaclText(server->Path("peers" + name));
    }
}

}  // namespace
}  // namespace permora::test
