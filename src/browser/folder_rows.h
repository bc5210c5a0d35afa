// The contents of one folder as rows of the browser.
#pragma once

#include <string_view>
#include <utility>

#include "browser/row_source.h"

namespace permora {

// Whether a listing of a folder has an entry of that name.
bool IsListedName(std::string_view name, DotNames dots);

// Whether the path leads to no folder any more. A folder that merely does not answer is not gone.
bool IsFolderGone(const std::string& path);

// Holds the folder from Open on. While it is shown, others may rename, remove or replace it:
//   renamed    rows are still those of the folder held, and are opened there; Up goes to the folder that it
//              is in now. Work by path or by a place is refused (Verify) until the list is refreshed, which
//              leads to the nearest folder that is left of the old path;
//   removed    the same, and nothing of it can be opened any more;
//   replaced   by another folder or a link: work is refused, and a refresh shows what the path leads to.
class FolderRows : public RowSource {
  public:
    // `folderPath` is full, or relative to the current directory. A link to a folder leads there.
    explicit FolderRows(std::string folderPath) : path(std::move(folderPath)) {}

    PlaceKind Kind() const override { return PlaceKind::kFolder; }
    std::string Location() const override { return path; }
    std::string Folder() const override { return path; }  // as the system reports it
    std::string Volume() const override;
    std::span<const unsigned int> Images() const override;
    bool Offers(unsigned int /*command*/) const override { return true; }
    std::unique_ptr<RowSource> Anew() const override { return std::make_unique<FolderRows>(path); }

    // Also makes the folder current (MakeCurrent).
    Outcome Open() override;
    // Folders come first, then files, each in the order of the directory search. Names that begin with a dot
    // are left out unless they are asked for.
    Outcome List(const RowOptions& options, RowReceiver& receiver) override;

    std::string Tip(const std::string& name) const override;
    Outcome FindPath(const std::string& name, std::string& found) const override;
    std::unique_ptr<RowSource> Enter(const std::string& name) const override;
    // As Verify.
    Outcome Hold(std::vector<std::string> names, Place& place) const override;
    DWORD MakeCurrent() const override;
    // ERROR_CANT_RESOLVE_FILENAME when the path leads to another folder, else why it leads to none.
    DWORD Verify() const override;

    // What `location` leads to from here.
    std::unique_ptr<FolderRows> From(const std::string& location) const;

  private:
    std::string path;
    std::shared_ptr<const FolderHandle> held;  // before Open: what `path` is relative to
    std::string above;                         // the path of that
};

}  // namespace permora
