// The system clipboard with registered formats.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "framework/window.h"

namespace permora {

// Id of the format named `name`, the same for every program of the session; 0 on failure. A MIME type
// ("text/uri-list") stands for itself where the desktop's formats are MIME types.
unsigned int RegisterClipboardFormat(const std::string& name);

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
    // Bytes that another program may have written: trust nothing.
    std::optional<std::vector<std::uint8_t>> GetData(unsigned int format) const;
    static bool IsFormatAvailable(unsigned int format);

  private:
    bool isOpen = false;
};

}  // namespace permora
