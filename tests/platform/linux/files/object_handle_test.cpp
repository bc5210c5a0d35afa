// Handles, and the attributes that are reached through them.
#include "platform/linux/files/object_handle.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "platform/linux/files/extended_attributes.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

ObjectHandle Open(const std::string& hostPath) {
    ObjectHandle handle;
    EXPECT_EQ(ObjectHandle::OpenAt(AT_FDCWD, hostPath.c_str(), handle), ERROR_SUCCESS) << hostPath;
    return handle;
}

TEST(ObjectHandle, HoldsTheObjectAndNotItsName) {
    const test::TemporaryFolder folder;
    const std::string name = folder.MakeFile("name");
    const ObjectHandle handle = Open(name);
    ASSERT_EQ(rename(name.c_str(), folder.Path("renamed").c_str()), 0);
    ASSERT_EQ(symlink("/etc/passwd", name.c_str()), 0);

    const std::vector<std::uint8_t> value{1, 2, 3};
    EXPECT_EQ(WriteExtendedAttribute(handle, "user.test", value), 0);
    std::vector<std::uint8_t> read;
    EXPECT_EQ(ReadExtendedAttribute(Open(folder.Path("renamed")), "user.test", read), 0);
    EXPECT_EQ(read, value);
    EXPECT_TRUE(Open(name).IsLink());
    EXPECT_EQ(ReadExtendedAttribute(Open(name), "user.test", read), ENODATA);
}

TEST(ObjectHandle, IsListedOnlyWhenItIsAFolderAndReplacedOnlyOnSuccess) {
    const test::TemporaryFolder folder;
    folder.MakeFile("file");
    ASSERT_EQ(symlink(".", folder.Path("link").c_str()), 0);
    UniqueFd listing;
    EXPECT_EQ(Open(folder.Path("file")).OpenForListing(listing), ERROR_DIRECTORY);
    EXPECT_EQ(Open(folder.Path("link")).OpenForListing(listing), ERROR_DIRECTORY);
    EXPECT_FALSE(listing);
    EXPECT_EQ(Open(folder.Path()).OpenForListing(listing), ERROR_SUCCESS);
    EXPECT_TRUE(listing);

    ObjectHandle handle = Open(folder.Path("file"));
    const int descriptor = handle.Descriptor();
    EXPECT_EQ(ObjectHandle::OpenAt(listing.Get(), "missing", handle), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(handle.Descriptor(), descriptor);
}

TEST(ExtendedAttributes, OfAnySizeAreReadWhole) {
    const test::TemporaryFolder folder;
    ObjectHandle handle = Open(folder.MakeFile("file"));
    std::vector<std::uint8_t> read;
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{4000}, std::size_t{10}}) {
        const std::vector<std::uint8_t> value(size, 7);
        ASSERT_EQ(WriteExtendedAttribute(handle, "user.test", value), 0) << size;
        EXPECT_EQ(ReadExtendedAttribute(handle, "user.test", read), 0);
        EXPECT_EQ(read, value);
    }
    EXPECT_EQ(AskExtendedAttribute(handle, "user.test"), 0);
    EXPECT_EQ(AskExtendedAttribute(handle, "user.other"), ENODATA);
}

}  // namespace
}  // namespace permora::host
