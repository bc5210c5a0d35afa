// A host of the deletion that records its calls.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "deletion/secure_delete.h"
#include "security/object_security.h"
#include "tests/support/places.h"

namespace permora {

inline bool operator==(const Outcome& one, const Outcome& other) {
    return one.step == other.step && one.object == other.object && one.code == other.code;
}

inline void PrintTo(const Outcome& outcome, std::ostream* stream) {
    *stream << outcome.object << ": step " << static_cast<int>(outcome.step) << ", code " << outcome.code;
}

namespace test {

class RecordingHost : public SecureDeleteHost {
  public:
    RecordingHost() : SecureDeleteHost(isStopping) {}

    void BeginEntry(const std::string& name) override {
        entries.push_back(name);
        if (onEntry) onEntry(name);
    }
    void Deleted(const std::string& name) override { deleted.push_back(name); }
    void Failed(const Outcome& failure) override { failures.push_back(failure); }
    FileScrutiny Scrutiny() const override { return scrutiny; }
    bool MayOverwrite(const std::string& /*name*/, const std::vector<OverwriteObstacle>& found) override {
        obstacles = found;
        return false;
    }

    // Deletes an object of the current directory.
    void Delete(const std::string& name) {
        SecureDeleteItem(*this, Remember(name));
        seclusion.End();
    }
    static RememberedObject Remember(const std::string& name) {
        return RememberPlace(InCurrentFolder({name})).items.front();
    }

    std::atomic<bool> isStopping = false;
    std::function<void(const std::string&)> onEntry;
    std::vector<std::string> entries;
    std::vector<std::string> deleted;
    Outcomes failures;
    FileScrutiny scrutiny = FileScrutiny::kOpeners;
    std::vector<OverwriteObstacle> obstacles;  // of the file that was refused last
};

}  // namespace test
}  // namespace permora
