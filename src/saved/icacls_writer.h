// The text in which the system's tool icacls saves DACLs, written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "saved/output_buffer.h"
#include "saved/saved_list_writer.h"

namespace permora {

// The tool restores into a folder, so the name of each top comes before the paths of its objects. A drive's
// root has none: BeginTop answers with ERROR_NOT_SUPPORTED then.
class IcaclsWriter : public SavedListWriter {
  public:
    explicit IcaclsWriter(SavedOutput& output) : buffer(output) {}

    DWORD Begin(const SavedHead& head) override;
    DWORD BeginTop(const SavedTop& top) override;
    DWORD Add(std::string_view path, SavedKind kind, std::span<const std::uint8_t> descriptor) override;
    DWORD AddGap(std::string_view path, SavedKind kind, DWORD error) override;
    DWORD MarkIncomplete() override;
    DWORD End() override;

  private:
    OutputBuffer buffer;
    std::string topName;
    // Most objects have the list of the one before.
    std::vector<std::uint8_t> lastDescriptor;
    std::string lastSddl;
    std::string pair;  // its capacity is reused
};

}  // namespace permora
