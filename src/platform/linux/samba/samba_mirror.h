// Samba's databases in a place of our own, for tools that are only asked.
//
// Samba's tools open databases for writing whatever they are told to do, and make those that are missing:
// with that of secrets a new identity of the machine, under which nobody knows the accounts of before. So who
// only wants to look lets them work on copies. Copies of databases are in memory and go with the process, and
// so does the folder when the process ends, also while another thread works there. One that is killed leaves
// the folder, readable by its user alone, with what tools made there and the texts of users' shares, until
// that user's next process makes one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/samba/samba_places.h"

namespace permora::host {

// A copy is made while Samba's own lock on the database is held, so it is one that stood at a moment. What is
// not known as a database, and what this process may not read, is what it is: a link.
class SambaMirror {
  public:
    SambaMirror() = default;
    SambaMirror(const SambaMirror&) = delete;
    SambaMirror& operator=(const SambaMirror&) = delete;
    ~SambaMirror();

    // All return 0 or an error code, ERROR_TIMEOUT when a database stays locked for ten seconds.

    // The folder, in which Samba seems never to have run. Once, before anything else.
    DWORD Make();
    // What is in the folder of that kind now. One that is not there adds nothing.
    DWORD AddState(const std::string& folder);
    DWORD AddPrivate(const SambaPlaces& places);
    // An empty one for users' shares, in the place of the real one. Root alone can make a folder that Samba
    // takes for that.
    DWORD AddUserShareFolder();

    const std::string& Folder() const { return root; }
    std::string StateFolder() const { return root + "/state"; }
    std::string UserShareFolder() const { return root + "/usershares"; }
    // What a tool must be told to work here. The private folder is the real one until it has been added.
    const std::vector<std::string>& Options() const { return options; }
    // What leads to the private folder alone.
    const std::vector<std::string>& PrivateOptions() const { return privateOptions; }

  private:
    DWORD MakeRoot(const std::string& place);
    DWORD AddFolder(const std::string& folder, const std::string& name,
                    const std::vector<std::string_view>& databases);
    DWORD CopyDatabase(const std::string& source, const std::string& place);
    DWORD Link(const std::string& target, const std::string& place);
    void SetPrivate(std::string_view setting, const std::string& value);

    std::string root;  // empty: not made
    UniqueFd hold;     // on it, locked: its process lives
    std::vector<UniqueFd> copies;
    std::vector<std::string> options;
    std::vector<std::string> privateOptions;
};

}  // namespace permora::host
