// The text in which the system's tool icacls saves DACLs, read.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/nt/sddl_sid.h"
#include "saved/saved_lines.h"
#include "saved/saved_list_reader.h"

namespace permora {

class IcaclsReader : public SavedListReader {
  public:
    IcaclsReader(SavedLines text, nt::SddlAccounts meanings);

    const SavedHead& Head() const override { return head; }
    const SavedTop& Top() const override { return top; }
    std::size_t TopCount() const override { return 1; }
    bool Next(SavedObject& object, SavedFault& fault) override;
    bool IsComplete() const override { return true; }

  private:
    bool NextLine(std::string& line);
    bool TakeDescriptor(const std::string& sddl);
    bool Refuse(const char* reason);

    SavedLines lines;
    const nt::SddlAccounts accounts;
    SavedHead head;
    SavedTop top;
    std::string lastSddl;  // most objects have the list of the one before
    std::shared_ptr<const SavedDescriptor> lastDescriptor;
    SavedFault problem;
};

}  // namespace permora
