// Reads a text of saved lists, object by object, and believes nothing of it.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "platform/api/errors.h"
#include "platform/nt/sddl_sid.h"
#include "platform/sequential_file.h"
#include "saved/saved_list.h"

namespace permora {

// Where the text comes from.
class SavedInput {
  public:
    virtual ~SavedInput() = default;
    // Fills `block` from its beginning; `count` is how much there was, 0 at the end. 0 or a system error
    // code.
    virtual DWORD Read(std::span<char> block, std::size_t& count) = 0;
};

// A file that is held open, so that it can be read again and is still the same one.
class SavedFileInput : public SavedInput {
  public:
    // `path` is one of files.h. Links are followed, as for any file that is only read.
    static DWORD Open(const std::string& path, SavedFileInput& input);
    DWORD Read(std::span<char> block, std::size_t& count) override { return file.Read(block, count); }
    // The next Read begins at the file's beginning. ERROR_NOT_SUPPORTED for what can be read once only.
    DWORD Rewind() { return file.Rewind(); }

  private:
    SequentialFile file;
};

// Only when Next has come to the end without a fault is the text whole and as it was written: it is checked
// on the way. Whoever acts on it reads it to its end before, and then again.
//
// Memory grows with the longest line and with the distinct descriptors up to a fixed limit, not with the
// objects. One thread at a time.
class SavedListReader {
  public:
    // Recognises the form and reads the head. Null: `fault` says why. `input` must outlive the reader. In the
    // form of icacls the words that need a machine or domain mean `accounts`; others are faults, as all are
    // in our own form, which has none.
    static std::unique_ptr<SavedListReader> Open(SavedInput& input, SavedFault& fault,
                                                 const nt::SddlAccounts& accounts = {});

    virtual ~SavedListReader() = default;

    virtual const SavedHead& Head() const = 0;
    // The one to which the object that came last belongs.
    virtual const SavedTop& Top() const = 0;
    // How many tops there were so far; of kIcacls always 1.
    virtual std::size_t TopCount() const = 0;

    // The next object, a folder before what is in it. In our own form the paths of one top ascend, compared
    // name by name and byte by byte, so none comes twice; in the other they come as they stand. False at the
    // end, and on a fault, which is then not empty.
    virtual bool Next(SavedObject& object, SavedFault& fault) = 0;
    // After Next has come to the end: whether the text says that nothing was missing when it was saved. The
    // form of icacls never says so; it is taken to be complete.
    virtual bool IsComplete() const = 0;
};

}  // namespace permora
