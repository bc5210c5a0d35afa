#include "platform/linux/shell/mime_database.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using testing::ElementsAre;

class MimeDatabases : public testing::Test {
  protected:
    MimeDatabases() {
        for (const char* name :
             {"user", "user/mime", "user/mime/a", "system", "system/mime", "system/mime/a"})
            base.MakeFolder(name);
        Write("system/mime/globs2",
              "# comment\n50:a/gzip:*.gz\n50:a/tar-gz:*.tar.gz\n50:a/c:*.c\n50:a/cpp:*.C:cs\n40:a/weak:*.x\n"
              "60:a/strong:*.x\n50:a/make:makefile\n10:a/make:makefile.*\n50:a/lib:*.so.[0-9]*\n50:a/old:*~\n"
              "50:a/core:core:cs\nbroken line\nx:a/bad:*.bad\n50:a/system:*.both\n50:a/empty:\n"
              "50:a/video:[0-9][0-9].vdr\n50:a/set:[]x]y*z\n50:a/not:[!]x]y*w\n50:a/"
              "class:[[:digit:]]*v\n50:a/escaped:q\\[*\n50:a/Case:R*s:cs\n");
        Write("user/mime/globs2", "50:a/user:*.both\n");
        Write("system/mime/icons", "a/c:source\na/gzip:archive\n");
        Write("user/mime/icons", "a/gzip:own\n");
        Write("system/mime/generic-icons", "a/c:text-x-generic\n");
    }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(base.Path(name)) << text;
    }

    test::TemporaryFolder base;
};

TEST_F(MimeDatabases, TellTypesByNames) {
    const MimeDatabase database({base.Path("user"), base.Path("missing"), base.Path("system")});
    const std::pair<const char*, const char*> kCases[] = {
        {"x.gz", "a/gzip"},
        {"x.tar.gz", "a/tar-gz"},
        {"X.TAR.GZ", "a/tar-gz"},
        {".gz", "a/gzip"},
        {"x.c", "a/c"},
        {"x.C", "a/cpp"},
        {"x.x", "a/strong"},
        {"Makefile", "a/make"},
        {"Makefile.am", "a/make"},
        {"l.so.6", "a/lib"},
        {"l.so.y", ""},
        {"x.c~", "a/old"},
        {"core", ""},
        {"x.bad", ""},
        {"x.both", "a/user"},
        {"12.vdr", "a/video"},
        {"ab.vdr", ""},
        {"]y-z", "a/set"},
        {"q[1]", "a/escaped"},
        {"Rs", "a/Case"},
        {"rs", ""},
        {"gz", ""},
        {"", ""},
        {"\xFF.gz", "a/gzip"},
    };
    for (const auto& [name, type] : kCases)
        EXPECT_EQ(database.TypeOfName(name), type) << name;
    EXPECT_EQ(MimeDatabase({base.Path("missing")}).TypeOfName("x.gz"), "");
}

TEST_F(MimeDatabases, NameIconsFromTheMostFittingOn) {
    const MimeDatabase database({base.Path("user"), base.Path("system")});
    EXPECT_THAT(database.IconsOf("a/c"), ElementsAre("source", "a-c", "text-x-generic"));
    EXPECT_THAT(database.IconsOf("a/gzip"), ElementsAre("own", "a-gzip", "a-x-generic"));
}

TEST_F(MimeDatabases, CallTypesInTheUsersLanguage) {
    Write("user/mime/a/other.xml", "<mime-type/>");
    Write("system/mime/a/other.xml", "<comment>Other</comment>");
    Write("system/mime/a/c.xml", R"(<?xml version="1.0"?><mime-type type="a/c">
<!--Created automatically-->
<comment xml:lang="de">C &amp; &quot;Quelltext&quot;</comment><comment>C source</comment>
<comment xml:lang="de_AT">C-Text</comment><comment xml:lang="fr"/></mime-type>)");
    const MimeDatabase database({base.Path("user"), base.Path("system")});
    const std::pair<std::vector<std::string>, const char*> kCases[] = {
        {{}, "C source"},
        {{"de_DE", "de"}, "C & \"Quelltext\""},
        {{"de_AT", "de"}, "C-Text"},
        {{"fr"}, "C source"},
    };
    for (const auto& [languages, comment] : kCases)
        EXPECT_EQ(database.CommentOf("a/c", languages), comment);
    EXPECT_EQ(database.CommentOf("a/other", {}), "Other");
    EXPECT_EQ(database.CommentOf("a/missing", {}), "");
    for (const char* damaged :
         {"", "<comment", "<comment>", "<comment>text", "<comment xml:lang=", "<comment xml:lang=\"d"})
        EXPECT_EQ(CommentInXml(damaged, {"d"}), "") << damaged;

    setenv("LC_ALL", "", 1);
    setenv("LC_MESSAGES", "de_AT.UTF-8", 1);
    EXPECT_THAT(WantedLanguages(), ElementsAre("de_AT", "de"));
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_THAT(WantedLanguages(), ElementsAre());
}

}  // namespace
}  // namespace permora::host
