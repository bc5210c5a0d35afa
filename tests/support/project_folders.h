// Where the sources and what was built from them are. One small source knows these paths, so that every other
// compiles to the same in whatever folder.
#pragma once

#include <string>

namespace permora::test {

// A file of the sources, whose `path` starts at the project's folder.
std::string InProject(const std::string& path);

// The folder of this build's programs, and a program in it.
std::string ProgramFolder();
std::string BuiltProgram(const std::string& name);

// In this folder a test keeps the pictures of its windows. `name` tells them from those of others.
std::string PictureFolder(const std::string& name);

}  // namespace permora::test
