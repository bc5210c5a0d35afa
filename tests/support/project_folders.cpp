#include "tests/support/project_folders.h"

namespace permora::test {

std::string InProject(const std::string& path) {
    return PROJECT_FOLDER "/" + path;
}

std::string ProgramFolder() {
    return PROGRAM_FOLDER;
}

std::string BuiltProgram(const std::string& name) {
    return ProgramFolder() + '/' + name;
}

std::string PictureFolder(const std::string& name) {
    return PICTURE_FOLDER "/" + name;
}

}  // namespace permora::test
