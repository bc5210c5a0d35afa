#include "tests/platform/linux/security/random_tree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "tests/support/access_lists.h"

namespace permora::test {

std::vector<std::string> MakeRandomTree(const std::string& folder, const char* list, int count,
                                        unsigned seed) {
    std::mt19937 random(seed);
    const char* const kinds[] = {"O:BUD:", "O:BAD:(A;OICI;FR;;;WD)", "O:BUD:P(A;OICI;FA;;;WD)",
                                 "O:BUD:NO_ACCESS_CONTROL"};
    EXPECT_EQ(SetDescriptorText(folder, list), 0U);
    std::vector<std::string> names;
    std::vector<std::string> folders = {""};
    for (int i = 0; i < count; ++i) {
        const std::string name = folders[random() % folders.size()] + std::to_string(i);
        const std::string path = folder + '/' + name;
        if (random() % 3 == 0) {
            std::filesystem::create_directory(path);
            folders.push_back(name + '/');
        } else {
            std::ofstream{path};
        }
        EXPECT_EQ(SetDescriptorText(path, kinds[random() % std::size(kinds)]), 0U);
        names.push_back(name);
    }
    return names;
}

}  // namespace permora::test
