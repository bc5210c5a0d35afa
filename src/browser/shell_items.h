// What the desktop's shell knows about files and folders, and does with them.
#pragma once

#include <string>

#include "platform/api/shell.h"

namespace permora {

// The shell's name for the kind of an object ("Text document"); empty when it has none.
std::string ShellTypeName(const std::string& path);

// Opens a file, or an address, with the program that the shell has for it. `owner` may be null.
bool OpenByShell(HWND owner, const std::string& target);

// Runs a file operation of the shell (FO_, platform/api/shell.h), which shows its progress, questions and
// failures itself. `files` is a list (file_list.h); `target` is the folder or the new path, or empty.
void RunFileOperation(HWND owner, UINT function, LPCSTR files, const std::string& target);
void RunFileOperation(HWND owner, UINT function, LPCWSTR files, const std::string& target);

}  // namespace permora
