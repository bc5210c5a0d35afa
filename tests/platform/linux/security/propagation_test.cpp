#include "platform/linux/security/propagation.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <random>
#include <string>
#include <vector>

#include "platform/raw_security.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using test::DescriptorText;
using test::SetDescriptorText;
using test::TemporaryFolder;

constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
constexpr const char* kOldList = "O:BAD:P(A;OICI;FA;;;BA)";
constexpr const char* kNewList = "O:BAD:P(D;OICIIO;FX;;;BG)(A;OICI;GA;;;CO)(A;CINP;FR;;;BU)";

// Some tree with lists of many kinds below a folder with a list, the same for the same seed. Names, folders
// before what is in them.
std::vector<std::string> MakeTree(const TemporaryFolder& tree, const char* list, unsigned seed) {
    std::mt19937 random(seed);
    const char* const kinds[] = {"O:BUD:", "O:BAD:(A;OICI;FR;;;WD)", "O:BUD:P(A;OICI;FA;;;WD)",
                                 "O:BUD:NO_ACCESS_CONTROL"};
    EXPECT_EQ(SetDescriptorText(tree.Path(), list), 0U);
    std::vector<std::string> names;
    std::vector<std::string> folders = {""};
    for (int i = 0; i < 400; ++i) {
        const std::string name = folders[random() % folders.size()] + std::to_string(i);
        const bool isFolder = random() % 3 == 0;
        const std::string path = isFolder ? tree.MakeFolder(name) : tree.MakeFile(name);
        if (isFolder) folders.push_back(name + '/');
        EXPECT_EQ(SetDescriptorText(path, kinds[random() % std::size(kinds)]), 0U);
        names.push_back(name);
    }
    return names;
}

// Whatever the threads, each object has what it would have if it had been made below the new list.
TEST(Propagation, HasTheSameResultWithAnyNumberOfThreads) {
    if (geteuid() != 0) GTEST_SKIP() << "a list with owners of many kinds needs root";
    const auto newList = test::DescriptorOf(kNewList);
    const nt::Acl list = AclOf(test::ListOf(newList)).value();
    for (const unsigned seed : {1U, 2U}) {
        // Each object made on its own below the new list.
        const TemporaryFolder judge;
        const std::vector<std::string> names = MakeTree(judge, kNewList, seed);
        for (const std::size_t threads : {1U, 2U, 16U}) {
            const TemporaryFolder tree;
            ASSERT_EQ(MakeTree(tree, kOldList, seed), names);
            ObjectHandle top;
            ASSERT_EQ(ObjectHandle::OpenAt(AT_FDCWD, tree.Path().c_str(), top), ERROR_SUCCESS);
            const FailuresBelow failures =
                PropagateList(top, nt::MapGenericRights(list, {}), DescriptorStore(), threads);
            EXPECT_EQ(failures.count, 0U) << failures.firstPath << ' ' << failures.firstError;
            for (const std::string& name : names)
                ASSERT_EQ(DescriptorText(tree.Path(name), kParts), DescriptorText(judge.Path(name), kParts))
                    << name << ", " << threads << " threads, seed " << seed;
        }
    }
}

}  // namespace
}  // namespace permora::host
