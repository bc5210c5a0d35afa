#include "tests/support/kept_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "tests/support/project_folders.h"

namespace permora::test {

std::vector<std::string> KeptFiles(const std::string& folder, const std::string& name,
                                   const std::function<void(const std::string& path)>& make) {
    namespace fs = std::filesystem;
    std::vector<std::string> paths;
    for (const auto& version : fs::directory_iterator(InProject("tests/kept"))) {
        if (!fs::exists(version.path() / name)) continue;
        paths.push_back(folder + '/' + version.path().filename().string() + '/' + name);
        fs::create_directory(fs::path(paths.back()).parent_path());
        fs::copy_file(version.path() / name, paths.back());
        fs::permissions(paths.back(), fs::perms::owner_read | fs::perms::owner_write);
    }
    EXPECT_TRUE(!paths.empty() || std::getenv("PERMORA_KEEP") != nullptr) << "no version has kept " << name;
    std::ranges::sort(paths);
    paths.push_back(folder + "/now/" + name);
    fs::create_directory(folder + "/now");
    make(paths.back());
    if (const char* const keep = std::getenv("PERMORA_KEEP");
        keep != nullptr)  // NOLINT(concurrency-mt-unsafe)
        fs::copy_file(paths.back(), fs::path(keep) / name, fs::copy_options::overwrite_existing);
    return paths;
}

}  // namespace permora::test
