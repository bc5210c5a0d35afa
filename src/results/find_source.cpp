#include "results/find_source.h"

#include <array>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include "platform/grouped_number.h"
#include "platform/nt/security_descriptor.h"
#include "report/found_objects.h"
#include "results/object_rows.h"
#include "saved/output_buffer.h"
#include "saved/tree_source.h"
#include "security/descriptor_comparison.h"
#include "security/entry_details.h"

namespace permora {
namespace {

constexpr const char* kJson = "json";
constexpr std::array<SaveFormat, 2> kFormats = {{{"Table with commas", "csv"}, {"JSON", kJson}}};

enum Column : std::size_t { kName, kFolder, kKind, kFits, kOwner };
constexpr std::array<ResultColumn, 5> kFoundColumns = {{{"Name", 170},
                                                        {"Folder", 240, ColumnOrder::kArrival},
                                                        {"Kind", 60},
                                                        {"What fits", 330},
                                                        {"Owner", 150}}};
constexpr std::size_t kReason = kKind;  // in the place of the kind
constexpr std::array<ResultColumn, 3> kMissedColumns = {
    {{"Name", 190}, {"Folder", 270, ColumnOrder::kArrival}, {"Why it was not searched", 500}}};

}  // namespace

// What is shown of one descriptor.
struct FindSource::FoundTexts {
    const FoundEntries* entries;
    std::string fits;
    std::string owner;  // empty: it has none
};

// What the worker has found since the pages took it last.
struct FindSource::News {
    struct Found {
        std::size_t top;
        std::string path;
        TreeObjectKind kind;
        const FoundTexts* texts;
    };
    struct Missed {
        std::size_t top;
        std::string path;
        TreeObjectKind kind;
        std::string reason;
    };

    std::mutex mutex;
    std::vector<Found> found;
    std::vector<Missed> missed;
    bool hasMetUnasked = false;
    // The worker's; what it hands out lives as long as this.
    SurveyedAccounts accounts;
    std::unordered_map<const FoundEntries*, FoundTexts> ofFolders;
    std::unordered_map<const FoundEntries*, FoundTexts> ofFiles;
};

class FindSource::FoundPage : public ResultPage {
  public:
    explicit FoundPage(const std::vector<ResultTop>& tops) : rows(tops) {}

    void Add(const News::Found& each) {
        rows.Add(each.top, each.path, each.kind);
        texts.push_back(each.texts);
    }

    std::string Title() const override { return "&Found"; }
    std::span<const ResultColumn> Columns() const override { return kFoundColumns; }
    std::size_t Count() const override { return texts.size(); }
    std::string Text(std::size_t row, std::size_t column) const override {
        switch (column) {
            case kName:
                return rows.Name(row);
            case kFolder:
                return rows.Folder(row);
            case kKind:
                return KindText(rows.Kind(row));
            case kFits:
                return texts[row]->fits;
            case kOwner:
                return texts[row]->owner;
            default:
                return {};
        }
    }
    std::optional<ResultObject> Object(std::size_t row) const override { return rows.Object(row); }
    const FoundEntries* Entries(std::size_t row) const { return texts[row]->entries; }

  private:
    ObjectRows rows;
    std::deque<const FoundTexts*> texts;
};

class FindSource::MissedPage : public ResultPage {
  public:
    explicit MissedPage(const std::vector<ResultTop>& tops) : rows(tops) {}

    void Add(News::Missed& each) {
        rows.Add(each.top, each.path, each.kind);
        reasons.push_back(std::move(each.reason));
    }

    std::string Title() const override { return "&Not searched"; }
    std::span<const ResultColumn> Columns() const override { return kMissedColumns; }
    std::size_t Count() const override { return reasons.size(); }
    std::string Text(std::size_t row, std::size_t column) const override {
        if (column == kReason) return reasons[row];
        return column == kName ? rows.Name(row) : rows.Folder(row);
    }
    std::optional<ResultObject> Object(std::size_t row) const override { return rows.Object(row); }

    bool hasMetUnasked = false;

  private:
    ObjectRows rows;
    std::deque<std::string> reasons;
};

// The worker's way through one tree.
class FindSource::Walk : public TreeVisitor {
  public:
    Walk(FindSource& whole, std::size_t number, const std::atomic<bool>& mustStop)
        : source(whole), top(number), isStopped(mustStop) {}

    bool Visit(const ReadObject& object) override {
        if (isStopped) return false;
        if (object.kind == SavedKind::kUnlisted) {
            source.AddMissed(top, std::string(object.path), TreeObjectKind::kFolder,
                             "What is in it: " + LineText({object.error}));
            return true;
        }
        ++source.objects;
        if (object.kind == SavedKind::kUnread)
            source.AddMissed(top, std::string(object.path), object.is, LineText({object.error}));
        else if (object.kind != SavedKind::kMounted)
            Look(object);
        return true;
    }

  private:
    void Look(const ReadObject& object) {
        const FoundEntries& fitting = source.search.Find(object.descriptor);
        if (!fitting.fits) return;
        const bool isFolder = object.is == TreeObjectKind::kFolder;
        auto& known = isFolder ? source.news->ofFolders : source.news->ofFiles;
        auto texts = known.find(&fitting);
        if (texts == known.end())
            texts =
                known
                    .emplace(&fitting, TextsOf(fitting, object.descriptor,
                                               isFolder ? ComparedObject::kFolder : ComparedObject::kFile))
                    .first;
        const std::lock_guard lock(source.news->mutex);
        source.news->found.push_back({top, std::string(object.path), object.is, &texts->second});
    }

    FoundTexts TextsOf(const FoundEntries& fitting, std::span<const std::uint8_t> descriptor,
                       ComparedObject kind) {
        SurveyedAccounts& accounts = source.news->accounts;
        FoundTexts texts{&fitting, {}, {}};
        const auto read = nt::SecurityDescriptor::FromBytes(descriptor);
        if (read && read->owner) texts.owner = accounts.NameOf(*read->owner);
        if (fitting.owner) texts.fits = "Owner";
        for (const nt::Ace& entry : fitting.entries.entries) {
            if (!texts.fits.empty()) texts.fits += "; ";
            if (!source.criteria.account) texts.fits += accounts.NameOf(*entry.sid) + ": ";
            texts.fits += EntryTypeName(entry.type) + ' ' + GrantText(entry, kind);
        }
        return texts;
    }

    FindSource& source;
    const std::size_t top;
    const std::atomic<bool>& isStopped;
};

FindSource::FindSource(std::vector<ResultTop> searchedTops, const EntryCriteria& searchedFor,
                       std::string searched)
    : tops(std::move(searchedTops)),
      criteria(searchedFor),
      title("Find - " + std::move(searched) + " in " + NameOfTops(tops)),
      search(searchedFor),
      news(std::make_unique<News>()),
      found(std::make_unique<FoundPage>(tops)),
      missed(std::make_unique<MissedPage>(tops)) {}

FindSource::~FindSource() = default;

std::string FindSource::Title() const {
    return title;
}

std::vector<ResultPage*> FindSource::Pages() {
    return {found.get(), missed.get()};
}

void FindSource::AddMissed(std::size_t top, std::string path, TreeObjectKind kind, std::string reason) {
    const std::lock_guard lock(news->mutex);
    news->missed.push_back({top, std::move(path), kind, std::move(reason)});
}

void FindSource::Run(const std::atomic<bool>& isStopped) {
    for (std::size_t top = 0; top < tops.size() && !isStopped; ++top) {
        HeldObject held;
        const Outcome outcome = FindItem(tops[top].remembered, held);
        if (!outcome.IsDone()) {
            AddMissed(top, {}, tops[top].object.kind, LineText(outcome));
            continue;
        }
        Walk walk(*this, top, isStopped);
        // The owner is shown beside the entries that fit.
        (void)ReadTree(held, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, walk);
    }
    {
        const std::lock_guard lock(news->mutex);
        news->hasMetUnasked = search.HasMetUnasked();
    }
    state = isStopped ? State::kStopped : State::kDone;
}

void FindSource::TakeNews() {
    std::vector<News::Found> newlyFound;
    std::vector<News::Missed> newlyMissed;
    {
        const std::lock_guard lock(news->mutex);
        newlyFound.swap(news->found);
        newlyMissed.swap(news->missed);
        missed->hasMetUnasked = news->hasMetUnasked;
    }
    for (const News::Found& each : newlyFound)
        found->Add(each);
    for (News::Missed& each : newlyMissed)
        missed->Add(each);
}

std::string FindSource::Status() const {
    const State now = state;
    std::string text = now == State::kRunning   ? "Searching: "
                       : now == State::kStopped ? "Stopped, the rest was not searched: "
                                                : "";
    text += ObjectsText(objects) + ", " + GroupedNumber(found->Count()) + " found";
    if (missed->Count() > 0) text += "; " + GroupedNumber(missed->Count()) + " not searched (see View)";
    if (missed->hasMetUnasked) text += "; accounts that could not be asked about are not among those found";
    return text;
}

std::span<const SaveFormat> FindSource::Formats() const {
    return kFormats;
}

DWORD FindSource::Write(const SaveFormat& format, SavedOutput& output) {
    const std::unique_ptr<FoundForm> form =
        format.extension == std::string_view(kJson) ? MakeFoundJson() : MakeFoundTable();
    OutputBuffer buffer(output);
    DWORD error = buffer.Write(form->Begin());
    for (std::size_t row = 0; row < found->Count() && error == ERROR_SUCCESS; ++row) {
        const ResultObject object = *found->Object(row);
        error = buffer.Write(form->Add({object.path, object.kind, found->Entries(row)}));
    }
    if (error == ERROR_SUCCESS) error = buffer.Write(form->End());
    return error == ERROR_SUCCESS ? buffer.Flush() : error;
}

}  // namespace permora
