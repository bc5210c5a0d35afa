// The machine's shares as rows of the browser.
#pragma once

#include "browser/row_source.h"

namespace permora {

inline constexpr const char* kShareListLocation = "Accessible shared resources";

// All shares but the one of the machine's services.
class ShareRows : public RowSource {
  public:
    PlaceKind Kind() const override { return PlaceKind::kShares; }
    std::string Location() const override { return kShareListLocation; }
    const char* TypeHeader() const override { return "Path"; }
    std::span<const unsigned int> Images() const override;
    bool Offers(unsigned int command) const override;
    std::unique_ptr<RowSource> Anew() const override { return std::make_unique<ShareRows>(); }
    Outcome List(const RowOptions& options, RowReceiver& receiver) override;
    // The folder that is shared.
    Outcome FindPath(const std::string& name, std::string& path) const override;
    std::unique_ptr<RowSource> Enter(const std::string& /*name*/) const override { return nullptr; }
};

// Ends the sharing of each in order, up to the first failure.
Outcome RemoveShares(std::span<const std::string> names);

}  // namespace permora
