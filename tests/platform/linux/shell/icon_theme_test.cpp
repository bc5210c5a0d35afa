#include "platform/linux/shell/icon_theme.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

class IconThemes : public testing::Test {
  protected:
    // A theme with the folders named, each with its lines in the index.
    void MakeTheme(const std::string& name, const std::string& inherits,
                   const std::vector<std::pair<std::string, std::string>>& folders) const {
        std::string directories;
        std::string sections;
        for (const auto& [folder, lines] : folders) {
            directories += folder + ",";
            sections += "\n[" + folder + "]\n" + lines + "\n";
            std::filesystem::create_directories(base.Path("icons/" + name + "/" + folder));
        }
        std::ofstream(base.Path("icons/" + name + "/index.theme"))
            << "[Icon Theme]\nInherits=" << inherits << "\nDirectories=" << directories << sections;
    }
    std::string MakeIcon(const std::string& name) const { return base.MakeFile("icons/" + name); }

    test::TemporaryFolder base;
};

TEST_F(IconThemes, GiveTheNearestThemesPictureInTheNearestSize) {
    MakeTheme("mine", "parent,mine,../evil",
              {{"16", "Size=16\nType=Fixed"},
               {"48", "Size=48\nType=Threshold\nThreshold=10"},
               {"any", "Size=64\nType=Scalable\nMinSize=8\nMaxSize=512"},
               {"../outside", "Size=16\nType=Fixed"}});
    MakeTheme("parent", "hicolor", {{"32", "Size=32"}});
    MakeTheme("hicolor", "", {{"16", "Size=16"}});
    const std::string small = MakeIcon("mine/16/file.png");
    const std::string large = MakeIcon("mine/48/file.png");
    const std::string scalable = MakeIcon("mine/any/other.png");
    const std::string drawing = MakeIcon("mine/any/drawing.svg");
    MakeIcon("mine/16/file.svg");
    MakeIcon("mine/16/other.txt");
    MakeIcon("outside/secret.png");
    const std::string inherited = MakeIcon("parent/32/file.png");
    const std::string generic = MakeIcon("parent/32/generic.png");
    const std::string last = MakeIcon("hicolor/16/last.png");

    const IconTheme theme("mine", {base.Path("missing"), base.Path()});
    const struct {
        std::vector<std::string> names;
        int size;
        std::string path;
    } cases[] = {
        {{"file"}, 16, small},
        {{"file"}, 20, small},
        {{"file"}, 39, large},
        {{"file"}, 32, large},
        {{"other"}, 16, scalable},
        {{"missing", "generic"}, 16, generic},
        {{"generic", "file"}, 16, small},  // a nearer theme's worse name comes before a farther one's better
        {{"last"}, 512, last},
        {{"drawing"}, 16, drawing},
        {{"../../outside/secret", "secret"}, 16, ""},
        {{}, 16, ""},
    };
    for (const auto& [names, size, path] : cases)
        EXPECT_EQ(theme.FindPicture(names, size), path) << (names.empty() ? "" : names[0]) << ' ' << size;
    EXPECT_EQ(IconTheme("parent", {base.Path()}).FindPicture({"file"}, 16), inherited);
    EXPECT_EQ(IconTheme("../icons/mine", {base.Path()}).FindPicture({"file", "last"}, 16), last);
}

}  // namespace
}  // namespace permora::host
