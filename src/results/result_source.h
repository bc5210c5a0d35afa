// What a window of results shows: tables of objects that grow while a walk goes on. No window.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/folder_files.h"
#include "platform/tree_reading.h"
#include "saved/saved_list_writer.h"

namespace permora {

enum class ColumnOrder : std::uint8_t {
    kArrival,  // that in which the rows come: of paths, the order of the tree
    kText,     // by ResultPage::KeyOf
};

struct ResultColumn {
    const char* title;
    int width;  // logical pixels, until the user changes it
    ColumnOrder order = ColumnOrder::kText;
};

// What a row is ordered by in a column: its number, then its text, byte by byte.
struct ResultKey {
    std::int64_t number = 0;
    std::string text;

    friend bool operator<(const ResultKey& one, const ResultKey& other) {
        return one.number != other.number ? one.number < other.number : one.text < other.text;
    }
};

// An object of a row. It is found from the held folder in which the walk began, so that nobody can lead the
// program elsewhere by a new folder in the path.
struct ResultObject {
    std::string path;  // full, as the browser takes it
    TreeObjectKind kind = TreeObjectKind::kFile;
    std::shared_ptr<const FolderHandle> start;  // null: `path` is the root of a drive
    std::string pathFromStart;                  // empty: the start itself
};

// A table. User-interface thread only.
class ResultPage {
  public:
    virtual ~ResultPage() = default;
    virtual std::string Title() const = 0;  // the entry of the View menu, with its mnemonic: "&Folders"
    virtual std::span<const ResultColumn> Columns() const = 0;
    // The rows that have come. They stay where they are, and their number never falls.
    virtual std::size_t Count() const = 0;
    virtual std::string Text(std::size_t row, std::size_t column) const = 0;
    // For columns that are ordered by it. Default: the text, letters A to Z as small ones.
    virtual ResultKey KeyOf(std::size_t row, std::size_t column) const;
    // Nothing: the row is no object, but an account, say.
    virtual std::optional<ResultObject> Object(std::size_t row) const = 0;
    // The depth in a tree, which is shown in the order of arrival only.
    virtual std::size_t Indent(std::size_t /*row*/) const { return 0; }
};

// A way of saving.
struct SaveFormat {
    const char* name;       // "Web page"
    const char* extension;  // "html"
};

// Outlives its worker, which runs Run once and Write after it.
class ResultSource {
  public:
    virtual ~ResultSource() = default;

    // The title of the window: "Find - FILES\Operators in C:\data".
    virtual std::string Title() const = 0;
    // The first one is shown first. They live as long as this.
    virtual std::vector<ResultPage*> Pages() = 0;

    // On a worker. Returns within 100 ms after `isStopped` is set.
    virtual void Run(const std::atomic<bool>& isStopped) = 0;
    // User-interface thread, some ten times a second while Run goes on, and once after its end: moves what
    // was found into the pages.
    virtual void TakeNews() = 0;
    // User-interface thread: the line below the list, also while Run goes on: "1,234 objects, 5 found; 2
    // could not be read".
    virtual std::string Status() const = 0;

    // Empty: nothing can be saved.
    virtual std::span<const SaveFormat> Formats() const = 0;
    // On a worker, after Run. 0 or a system error code: what was written until then is not complete. Writing
    // to `output` fails when the user has stopped it.
    virtual DWORD Write(const SaveFormat& format, SavedOutput& output) = 0;
};

}  // namespace permora
