#include "platform/linux/security/propagation.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "platform/raw_security.h"
#include "tests/platform/linux/security/random_tree.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

using test::DescriptorText;
using test::MakeRandomTree;
using test::TemporaryFolder;

constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
constexpr const char* kOldList = "O:BAD:P(A;OICI;FA;;;BA)";
constexpr const char* kNewList = "O:BAD:P(D;OICIIO;FX;;;BG)(A;OICI;GA;;;CO)(A;CINP;FR;;;BU)";

// Whatever the threads, each object has what it would have if it had been made below the new list.
TEST(Propagation, HasTheSameResultWithAnyNumberOfThreads) {
    if (geteuid() != 0) GTEST_SKIP() << "a list with owners of many kinds needs root";
    const auto newList = test::DescriptorOf(kNewList);
    const nt::Acl list = AclOf(test::ListOf(newList)).value();
    for (const unsigned seed : {1U, 2U}) {
        // Each object made on its own below the new list.
        const TemporaryFolder judge;
        const std::vector<std::string> names = MakeRandomTree(judge.Path(), kNewList, 400, seed);
        for (const std::size_t threads : {1U, 2U, 16U}) {
            const TemporaryFolder tree;
            ASSERT_EQ(MakeRandomTree(tree.Path(), kOldList, 400, seed), names);
            ObjectHandle top;
            ASSERT_EQ(ObjectHandle::OpenAt(AT_FDCWD, tree.Path().c_str(), top), ERROR_SUCCESS);
            FailuresBelow failures;
            EXPECT_EQ(
                PropagateList(top, nt::MapGenericRights(list, {}), DescriptorStore(), {}, failures, threads),
                ERROR_SUCCESS);
            EXPECT_EQ(failures.count, 0U) << failures.named.begin()->first;
            for (const std::string& name : names)
                ASSERT_EQ(DescriptorText(tree.Path(name), kParts), DescriptorText(judge.Path(name), kParts))
                    << name << ", " << threads << " threads, seed " << seed;
        }
    }
}

}  // namespace
}  // namespace permora::host
