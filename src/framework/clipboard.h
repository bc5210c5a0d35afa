// The system clipboard with registered formats.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "framework/window.h"

namespace permora {

// Id of the format named `name`, the same for every program of the session; 0 on failure. A MIME type
// ("text/uri-list") means that MIME type where the desktop's formats are MIME types.
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

    // Both functions ask the program that owns the data. Meanwhile windows are painted but take no input.
    // After some seconds without a sign of that program, the functions give up (kSilence).

    // Waits until IsFormatAvailable is up to date: kGiven or kSilence.
    ClipboardAnswer AwaitFormats() const;
    // The bytes may come from another program and are not to be trusted. kNothing when there are too many;
    // `bytes` is unchanged unless the answer is kGiven.
    ClipboardAnswer GetData(unsigned int format, std::vector<std::uint8_t>& bytes) const;

    // What is known without asking. That may be out of date for a moment after another program has put
    // something there.
    static bool IsFormatAvailable(unsigned int format);

  private:
    CWnd& owner;
    bool isOpen = false;
};

// Puts a text on the clipboard. On false, nothing may be there.
bool CopyText(CWnd& owner, const std::string& text);

}  // namespace permora
