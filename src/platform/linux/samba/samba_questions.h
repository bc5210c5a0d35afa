// Asking Samba's tools, which is to change nothing.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/run_tool.h"
#include "platform/linux/samba/samba_mirror.h"

namespace permora::host {

// Makes a mirror of everything that tools may look at.
DWORD MirrorSamba(SambaMirror& mirror);

// As RunTool, for a tool that works on what the mirror holds.
DWORD AskSamba(const SambaMirror& mirror, const std::string& tool, const std::vector<std::string>& arguments,
               const ToolLimits& limits, std::string& answer,
               FailedOutput failedOutput = FailedOutput::kDropped);

// As RunTool, for a tool that is only to look: whatever it writes, it writes into copies (samba_mirror.h).
// Error codes of the copying beside those of RunTool.
DWORD AskSamba(const std::string& tool, const std::vector<std::string>& arguments, const ToolLimits& limits,
               std::string& answer, FailedOutput failedOutput = FailedOutput::kDropped);

// The same for a tool that changes the lists of shares, and nothing about the machine and its accounts.
DWORD TellSambaOfLists(const std::string& tool, const std::vector<std::string>& arguments,
                       const ToolLimits& limits, std::string& answer);

}  // namespace permora::host
