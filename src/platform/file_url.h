// Addresses of files ("file:///home/x"), by which the desktop's programs tell each other of them. Format: RFC
// 8089 and RFC 3986.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace permora {

// The address of an absolute path with a drive letter. Text only; the object need not exist. Empty when there
// is no such drive, or no object can have the path.
std::string FileUrlOf(const std::string& path);
// What stands in an address for one name in the folder that `FileUrlOf` told, behind a slash. Empty for what
// no object can be called.
std::string FileUrlPart(const std::string& name);

// The path that an address from elsewhere leads to. Empty for an address of another kind or of another
// computer, and for one that is not well-formed or whose path is not plain ("." and "..").
std::string PathFromFileUrl(std::string_view url);
// Those of many addresses in their order, for which the machine's drives are looked up once.
std::vector<std::string> PathsFromFileUrls(std::span<const std::string_view> urls);

}  // namespace permora
