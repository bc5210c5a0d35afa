// Samba's tools as they are asked about shares. Who asks changes nothing: the tools then work on copies of
// Samba's databases.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/base/run_tool.h"
#include "platform/linux/samba/samba_mirror.h"
#include "platform/linux/shares/samba_listing.h"

namespace permora::host {

// All return 0 or an error code: ERROR_SERVICE_DEPENDENCY_DELETED when the tool is not installed,
// ERROR_ACCESS_DENIED when it failed and we are not root, NERR_InternalError when it failed for root, else as
// AskSamba (samba_questions.h). On failure outputs are as they were.

DWORD AskSambaTool(const std::string& tool, const std::vector<std::string>& arguments, std::string& answer,
                   FailedOutput failedOutput = FailedOutput::kDropped);
// With a mirror that the caller has made.
DWORD AskSambaTool(const SambaMirror& mirror, const std::string& tool,
                   const std::vector<std::string>& arguments, std::string& answer,
                   FailedOutput failedOutput = FailedOutput::kDropped);
// For what is to be changed.
DWORD TellSambaTool(const std::string& tool, const std::vector<std::string>& arguments);
// Whether such an error code says that the tool ran and failed.
bool IsFailureOfTool(DWORD error);

// The configuration as the server reads it, the registry's part included.
DWORD ReadSambaConfiguration(std::vector<SambaSection>& sections);
// The settings that hold for the whole server, to be read with ParseGlobalParameter.
DWORD ReadGlobalSettings(std::string& listing);

// What a share's own list is, as the server keeps it apart from the configuration.
DWORD ReadSambaDescriptor(const std::string& share, std::vector<std::uint8_t>& descriptor);
// ERROR_NOT_SUPPORTED for entries that Samba has no words for. A null list is kept as no list, which means
// the same.
DWORD WriteSambaDescriptor(const std::string& share, const std::vector<std::uint8_t>& descriptor);

// Whether Samba is set up on this machine: its server is installed and has a configuration.
bool IsSambaSetUp();
// Whether the configuration file itself has a section for the share. So says too when it cannot be read.
bool IsFixedInFile(std::string_view share);

}  // namespace permora::host
