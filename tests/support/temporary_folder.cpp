#include "tests/support/temporary_folder.h"

#include <sys/stat.h>

#include <cstdio>
#include <fstream>

#include "tests/support/command.h"

namespace permora::test {

TemporaryFolder::TemporaryFolder(FolderPlace place)
    : path(FolderOf(place) + kTemporaryFolderPrefix + "XXXXXX") {
    if (mkdtemp(path.data()) == nullptr) {
        std::perror("mkdtemp");
        std::abort();  // no test can go on, and a guessed path must not be removed later
    }
}

TemporaryFolder::~TemporaryFolder() {
    RunCommand({"rm", "-rf", "--one-file-system", "--", path});
}

std::string TemporaryFolder::MakeFolder(const std::string& name) const {
    std::string folder = Path(name);
    if (mkdir(folder.c_str(), 0755) != 0) std::perror(folder.c_str());
    return folder;
}

std::string TemporaryFolder::MakeFile(const std::string& name) const {
    std::string file = Path(name);
    if (!std::ofstream(file)) std::perror(file.c_str());
    return file;
}

}  // namespace permora::test
