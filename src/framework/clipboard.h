// The system clipboard with registered formats.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "framework/window.h"

namespace permora {

// Id of the format named `name`, the same for every program of the session; 0 on failure. A MIME type
// ("text/uri-list") stands for itself where the desktop's formats are MIME types.
unsigned int RegisterClipboardFormat(const std::string& name);

// What became of a question to the program that the clipboard's contents are from.
enum class ClipboardAnswer { kGiven, kNothing, kSilence };

// The clipboard, open from construction to destruction.
class Clipboard {
  public:
    explicit Clipboard(CWnd& owner);
    ~Clipboard();
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;

    bool IsOpen() const { return isOpen; }
    bool Empty();
    bool SetData(unsigned int format, std::span<const std::uint8_t> bytes);

    // Another program must be asked for what it has put there. Both functions serve the windows meanwhile,
    // which take nothing from the user, and give up (kSilence) after some seconds without a sign of it.

    // Lets IsFormatAvailable know: kGiven or kSilence.
    ClipboardAnswer AwaitFormats() const;
    // Bytes that another program may have written: trust nothing. `bytes` is untouched unless there are some;
    // more than can be meant are none.
    ClipboardAnswer GetData(unsigned int format, std::vector<std::uint8_t>& bytes) const;

    // As far as that is known, which takes a moment after another program has put something there; nobody is
    // asked.
    static bool IsFormatAvailable(unsigned int format);

  private:
    CWnd& owner;
    bool isOpen = false;
};

}  // namespace permora
