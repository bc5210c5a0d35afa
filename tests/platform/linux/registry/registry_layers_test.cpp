#include "platform/linux/registry/registry_layers.h"

#include <gmock/gmock.h>

#include <fstream>
#include <string>

#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using testing::ElementsAre;

class LayeredKeys : public testing::Test {
  protected:
    static RegistryValue Value(const std::string& text) {
        return {"v", REG_BINARY, {text.begin(), text.end()}};
    }
    static std::string Query(const LayeredKey& key) {
        RegistryValue value;
        const DWORD error = key.Query("v", value);
        return error == ERROR_SUCCESS ? std::string(value.data.begin(), value.data.end())
                                      : std::to_string(error);
    }
    static bool Exists(const LayeredKey& key) {
        bool exists = false;
        EXPECT_EQ(key.Exists(exists), ERROR_SUCCESS);
        return exists;
    }

    test::TemporaryFolder base;
    RegistryLayer user{RegistryStore(base.Path("user"), RegistryAudience::kOwner), "HKEY_CURRENT_USER\\U"};
    RegistryLayer machine{RegistryStore(base.Path("machine"), RegistryAudience::kEveryone),
                          "HKEY_LOCAL_MACHINE\\M"};
    LayeredKey userOnly{{user}, RegistryWrites::kToFirst};
    LayeredKey machineOnly{{machine}, RegistryWrites::kToFirst};
};

TEST_F(LayeredKeys, OfTheUserHideTheMachinesAndAreTheOnlyOnesWritten) {
    const LayeredKey merged({user, machine}, RegistryWrites::kToFirst);
    ASSERT_EQ(machineOnly.Below("A").Set(Value("default")), ERROR_SUCCESS);
    EXPECT_EQ(Query(merged.Below("A")), "default");
    EXPECT_EQ(merged.Below("A").Remove(), ERROR_ACCESS_DENIED);
    ASSERT_EQ(merged.Below("a").Set(Value("own")), ERROR_SUCCESS);
    EXPECT_EQ(Query(merged.Below("A")), "own");
    EXPECT_EQ(Query(machineOnly.Below("A")), "default");
    ASSERT_EQ(merged.Below("B").Create(), ERROR_SUCCESS);
    EXPECT_FALSE(Exists(machineOnly.Below("B")));
    std::vector<std::string> names;
    ASSERT_EQ(merged.Subkeys(names), ERROR_SUCCESS);
    EXPECT_THAT(names, ElementsAre("a", "B"));

    // A damaged file of the machine matters only to who needs it.
    std::ofstream(base.Path("machine/registry.reg")) << "damaged";
    EXPECT_EQ(Query(merged.Below("A")), "own");
    EXPECT_EQ(Query(merged.Below("C")), std::to_string(ERROR_BADDB));
}

TEST_F(LayeredKeys, OfRegisteredTypesAreWrittenWhereTheyLie) {
    const LayeredKey merged({user, machine}, RegistryWrites::kWhereItLies);
    ASSERT_EQ(merged.Below("New\\Verb").Set(Value("1")), ERROR_SUCCESS);
    EXPECT_EQ(Query(machineOnly.Below("New\\Verb")), "1");
    ASSERT_EQ(userOnly.Below("Own").Create(), ERROR_SUCCESS);
    ASSERT_EQ(merged.Below("Own").Set(Value("2")), ERROR_SUCCESS);
    EXPECT_EQ(Query(userOnly.Below("Own")), "2");

    EXPECT_EQ(merged.Below("New").Remove(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(merged.Below("New\\Verb").Remove(), ERROR_SUCCESS);
    EXPECT_EQ(merged.Below("New").Remove(), ERROR_SUCCESS);
    EXPECT_EQ(merged.Below("Own").Remove(), ERROR_SUCCESS);
    EXPECT_EQ(merged.Below("Own").Remove(), ERROR_FILE_NOT_FOUND);
    EXPECT_TRUE(Exists(machineOnly));
}

}  // namespace
}  // namespace permora::host
