// A real NTFS volume for tests: an image file made with mkntfs and mounted with ntfs-3g.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "tests/support/temporary_folder.h"

namespace permora::test {

enum class NtfsMount { kWritable, kReadOnly, kStreamsAsFiles, kRequestsCounted };

class NtfsVolume {
  public:
    // Why this machine cannot mount NTFS volumes; empty when it can. A test that is not run says so:
    //     if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    static std::string SkipReason();

    // Makes an empty volume of `bytes` bytes (a sparse file) and mounts it.
    explicit NtfsVolume(std::uint64_t bytes = std::uint64_t{64} << 20);
    // Unmounts and removes it. When the test dies before, the mount goes with it.
    ~NtfsVolume();
    NtfsVolume(const NtfsVolume&) = delete;
    NtfsVolume& operator=(const NtfsVolume&) = delete;

    // What went wrong in making or mounting it; empty when all is well. To be asserted before the first use.
    const std::string& Problem() const { return problem; }

    // The mounted volume's root folder, and the path of `name` in it, as the host writes paths.
    const std::string& Root() const { return root; }
    std::string Path(const std::string& name) const { return root + "/" + name; }
    const std::string& Image() const { return image; }
    // The process that serves it.
    int Driver() const { return driver; }
    // How many requests of the kernel it has taken, of a volume that is mounted with kRequestsCounted.
    std::size_t Requests() const;

    // Anew, when it is mounted already.
    void Mount(NtfsMount mode = NtfsMount::kWritable);
    // Returns when everything has been written to the image.
    void Unmount();

    // Unmounts, and hands back what `ntfssecaudit -r -v` says about the object `path` of the volume and all
    // below it: every descriptor as text, and "No errors were found" when that is so.
    std::string Audit(const std::string& path = "/");
    // Unmounts, and hands back the entries of one object as ntfssecaudit reads them from the image: a line
    // "type flags rights SID" for each, with numbers in hexadecimal, the SID's too.
    std::string AuditedEntries(const std::string& path);

  private:
    bool IsMounted() const;

    TemporaryFolder folder;
    std::string image;
    std::string root;
    std::string problem;
    int driver = -1;
};

}  // namespace permora::test
