// Owner of an open listing of a folder.
#pragma once

#include <dirent.h>

#include <memory>

namespace permora::host {

struct ListingCloser {
    void operator()(DIR* listing) const { closedir(listing); }
};

using UniqueListing = std::unique_ptr<DIR, ListingCloser>;

}  // namespace permora::host
