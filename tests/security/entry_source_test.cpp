// On real trees.
#include "security/entry_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using test::DaclText;
using test::SetDescriptorText;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::StartsWith;

// top hands down to mid, which has entries of its own, and both to low with its file.
class EntrySourceTest : public testing::Test {
  protected:
    void SetUp() override {
        const DWORD error = SetDescriptorText(folder.Path(), "D:P(A;;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        for (const char* name : {"top", "top/mid", "top/mid/low", "other"})
            folder.MakeFolder(name);
        folder.MakeFile("top/mid/low/file");
        Give("other", "D:P(A;OICI;FA;;;BA)");
        Give("top", "O:BAD:P(A;OICI;FR;;;BG)(A;OICIIO;GA;;;CO)(A;OI;FR;;;SY)(A;;FA;;;BA)");
        Give("top/mid", "O:BAD:(A;OICI;FR;;;BU)(A;OICI;FR;;;BG)");
        Give("top/mid/low", "O:BAD:");
        Give("top/mid/low/file", "O:BUD:(A;;FR;;;BG)");
    }

    void Give(const std::string& name, const std::string& sddl) const {
        ASSERT_EQ(SetDescriptorText(folder.Path(name), sddl), ERROR_SUCCESS) << name;
    }
    std::string Shown(const std::string& name) const { return PathFromArgument(folder.Path(name).c_str()); }

    std::vector<std::string> Sources(const std::string& name) const {
        const HeldObject held = test::Held(folder.Path(name));
        ReadParts parts;
        EXPECT_EQ(held.ReadSecurity(DACL_SECURITY_INFORMATION, parts), ERROR_SUCCESS);
        std::vector<EntrySource> sources;
        EXPECT_EQ(FindEntrySources(held, parts.dacl, sources), ERROR_SUCCESS);
        std::vector<std::string> texts;
        for (const EntrySource& source : sources)
            texts.push_back(SourceText(source));
        return texts;
    }

    const test::TemporaryFolder folder;
};

constexpr const char* kNobody = "no folder above hands it down";

TEST_F(EntrySourceTest, TheNearestFolderWhoseOwnEntriesHandItDownLevelByLevel) {
    ASSERT_EQ(DaclText(folder.Path("top/mid/low/file")),
              "D:AI(A;;FR;;;BG)(A;ID;FR;;;BU)(A;ID;FR;;;BG)(A;ID;FR;;;BG)(A;ID;FA;;;BU)(A;ID;FR;;;SY)");
    const std::string top = Shown("top");
    const std::string mid = Shown("top/mid");
    EXPECT_THAT(Sources("top/mid/low/file"), ElementsAre("", mid, mid, top, top, top));
    EXPECT_THAT(Sources("top/mid/low"), ElementsAre(mid, mid, top, top, top, top));
    EXPECT_THAT(Sources("top/mid"), ElementsAre("", "", top, top, top, top));
    EXPECT_THAT(Sources("top"), ElementsAre("", "", "", ""));

    // By way of a link it is the same object; a link itself stands where it stands.
    std::filesystem::create_directory_symlink("../top/mid", folder.Path("other/link"));
    EXPECT_THAT(Sources("other/link/low/file"), ElementsAre("", mid, mid, top, top, top));
}

TEST_F(EntrySourceTest, AfterAMoveAndBelowAProtectedListNobodyHandsThemDown) {
    std::filesystem::rename(folder.Path("top/mid"), folder.Path("other/mid"));
    const std::string mid = Shown("other/mid");
    EXPECT_THAT(Sources("other/mid/low/file"), ElementsAre("", mid, mid, kNobody, kNobody, kNobody));
    EXPECT_THAT(Sources("other/mid"), ElementsAre("", "", kNobody, kNobody, kNobody, kNobody));
    // A later owner changes nothing about where the entry of the creator came from.
    std::filesystem::rename(folder.Path("other/mid"), folder.Path("top/mid"));
    Give("top/mid/low/file", "O:SY");
    EXPECT_EQ(Sources("top/mid/low/file")[4], Shown("top"));
}

TEST_F(EntrySourceTest, WhereTheSearchCannotGoOnItSaysSo) {
    const char* const attribute = geteuid() == 0 ? "security.NTACL" : "user.permora.sd";
    ASSERT_EQ(setxattr(folder.Path("top").c_str(), attribute, "damaged", 7, 0), 0);
    const std::vector<std::string> sources = Sources("top/mid");
    ASSERT_EQ(sources.size(), 6U);
    EXPECT_THAT(std::vector(sources.begin() + 2, sources.end()),
                Each(StartsWith("not known: the folder above cannot be read: ")));
    const std::string mid = Shown("top/mid");
    EXPECT_THAT(Sources("top/mid/low/file")[1], mid) << "what is found before stays";
}

}  // namespace
}  // namespace permora
