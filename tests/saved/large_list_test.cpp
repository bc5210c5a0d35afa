// A text of any length is read with the memory of a small one.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <new>
#include <string>

#include "platform/host_path.h"
#include "saved/checked_list.h"
#include "saved/saved_list_writer.h"
#include "tests/support/temporary_folder.h"

namespace {

std::atomic<std::size_t> used;
std::atomic<std::size_t> mostUsed;

}  // namespace

// All that this program takes is counted. Inlined, these would look to the compiler like malloc and delete,
// or new and free, for one block.
[[gnu::noinline]] void* operator new(std::size_t bytes) {
    void* block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr) throw std::bad_alloc();
    const std::size_t now = used += malloc_usable_size(block);
    if (now > mostUsed) mostUsed = now;
    return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    if (block != nullptr) used -= malloc_usable_size(block);
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t /*bytes*/) noexcept {
    operator delete(block);
}

namespace permora::test {
namespace {

class FileOutput : public SavedOutput {
  public:
    explicit FileOutput(const std::string& path) : file(path, std::ios::binary) {}
    DWORD Write(std::string_view bytes) override {
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return ERROR_SUCCESS;
    }

  private:
    std::ofstream file;
};

// `folders` of 100 files each, and 100 lists.
void WriteList(const std::string& path, int folders) {
    FileOutput output(path);
    const auto writer = SavedListWriter::Make(SavedForm::kPermora, output);
    ASSERT_EQ(writer->Begin({SavedForm::kPermora, "2026-11-26T08:02:11Z", 15}), ERROR_SUCCESS);
    ASSERT_EQ(writer->BeginTop({"C:\\data", "ext4 1a2b3c4d"}), ERROR_SUCCESS);
    nt::SecurityDescriptor descriptor;
    descriptor.owner = nt::Sid(5, {32, 544});
    std::vector<std::uint8_t> bytes;
    ASSERT_TRUE(descriptor.AppendTo(bytes));
    ASSERT_EQ(writer->Add("", SavedKind::kFolder, bytes), ERROR_SUCCESS);
    for (int i = 0; i < folders; ++i) {
        const std::string folder = "folder " + std::to_string(1'000'000 + i);
        ASSERT_EQ(writer->Add(folder, SavedKind::kFolder, bytes), ERROR_SUCCESS);
        for (int k = 0; k < 100; ++k) {
            std::vector<std::uint8_t> own;
            descriptor.owner = nt::Sid(5, {21, 1, 2, 3, static_cast<std::uint32_t>(k)});
            ASSERT_TRUE(descriptor.AppendTo(own));
            const std::string file = folder + "\\a file with some name " + std::to_string(100 + k);
            ASSERT_EQ(writer->Add(file, SavedKind::kFile, own), ERROR_SUCCESS);
        }
    }
    ASSERT_EQ(writer->End(), ERROR_SUCCESS);
}

// Beside what was in use before.
std::size_t MemoryToRead(const std::string& path, std::uint64_t& objects) {
    const std::size_t before = used;
    mostUsed = before;
    SavedFault fault;
    const auto list = CheckedList::Open(PathFromArgument(path.c_str()), {}, fault);
    EXPECT_TRUE(list) << fault.line << ": " << fault.reason;
    if (!list) return 0;
    objects = list->ObjectCount();
    EXPECT_TRUE(list->IsInOrder());
    const auto reader = list->Read(fault);
    SavedObject object;
    while (reader->Next(object, fault)) {
    }
    EXPECT_EQ(fault.reason, "");
    return mostUsed - before;
}

TEST(LargeList, TakesNoMoreMemoryThanASmallOne) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("lists");
    std::uint64_t objects = 0;
    ASSERT_NO_FATAL_FAILURE(WriteList(path, 30));
    const std::size_t small = MemoryToRead(path, objects);
    ASSERT_EQ(objects, 3'031U);
    ASSERT_NO_FATAL_FAILURE(WriteList(path, 1'500));
    const std::size_t large = MemoryToRead(path, objects);
    ASSERT_EQ(objects, 151'501U);
    EXPECT_LT(large, small + (std::size_t{2} << 20));
}

}  // namespace
}  // namespace permora::test
