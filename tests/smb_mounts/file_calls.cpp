// The calls behind the window's attributes, copying and moving, for scripts:
//
//   attributes PATH           prints the FILE_ATTRIBUTE_ flags, hexadecimal
//   attributes PATH FLAGS     sets them
//   list FOLDER               prints flags and name of each entry
//   copy SOURCE FOLDER        nobody is there to be asked
//   move SOURCE FOLDER
//
// The exit code is 1 after a failure, whose number is printed.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/api/directory_search.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/shell.h"
#include "platform/host_path.h"

namespace permora {
namespace {

DWORD PutInto(UINT function, const char* source, const char* folder) {
    const std::string from = PathFromArgument(source) + '\0';
    const std::string to = PathFromArgument(folder) + '\0';
    SHFILEOPSTRUCTA operation{};
    operation.wFunc = function;
    operation.pFrom = from.c_str();
    operation.pTo = to.c_str();
    const auto error = static_cast<DWORD>(SHFileOperationA(&operation));
    return error == ERROR_SUCCESS && operation.fAnyOperationsAborted != FALSE ? ERROR_CANCELLED : error;
}

DWORD PrintAttributes(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return GetLastError();
    std::printf("%x\n", static_cast<unsigned>(attributes));
    return ERROR_SUCCESS;
}

DWORD List(const std::string& folder) {
    WIN32_FIND_DATAA found{};
    HANDLE const search = FindFirstFileA((folder + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return GetLastError();
    do
        if (found.cFileName[0] != '.')
            std::printf("%x %s\n", static_cast<unsigned>(found.dwFileAttributes), found.cFileName);
    while (FindNextFileA(search, &found) != FALSE);
    const DWORD error = GetLastError();
    FindClose(search);
    return error == ERROR_NO_MORE_FILES ? DWORD{ERROR_SUCCESS} : error;
}

DWORD Call(int count, char** words) {
    const std::string_view what = count > 2 ? words[1] : "";
    if (what == "attributes" && count == 3) return PrintAttributes(PathFromArgument(words[2]));
    if (what == "list" && count == 3) return List(PathFromArgument(words[2]));
    if (count != 4) return ERROR_INVALID_PARAMETER;
    if (what == "copy") return PutInto(FO_COPY, words[2], words[3]);
    if (what == "move") return PutInto(FO_MOVE, words[2], words[3]);
    const auto flags = static_cast<DWORD>(std::strtoul(words[3], nullptr, 16));
    if (what != "attributes") return ERROR_INVALID_PARAMETER;
    return SetFileAttributesA(PathFromArgument(words[2]).c_str(), flags) != FALSE ? DWORD{ERROR_SUCCESS}
                                                                                  : GetLastError();
}

}  // namespace
}  // namespace permora

int main(int count, char** words) {
    const DWORD error = permora::Call(count, words);
    if (error != ERROR_SUCCESS) std::printf("error %u\n", static_cast<unsigned>(error));
    return error == ERROR_SUCCESS ? 0 : 1;
}
