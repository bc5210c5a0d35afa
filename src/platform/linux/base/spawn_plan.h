// How other programs are started: with three streams of their own and nothing else of this process.
#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace permora::host {

// Where programs that are started find their own helpers; a line of their environment.
inline constexpr const char* kToolPath = "PATH=/usr/bin:/usr/sbin:/bin:/sbin";

class SpawnPlan {
  public:
    enum class Ties {
        kOwnGroup,    // whatever it starts can be killed with it
        kOwnSession,  // it lives on without us
    };

    // Standard output goes to `outputTarget`, nowhere when that is -1; input comes from `inputSource`, and is
    // empty when that is -1, and else must be none of the three. Errors go nowhere.
    SpawnPlan(int outputTarget, Ties ties, int inputSource = -1);
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan();

    // Starts the program at an absolute path with exactly this environment. An errno value, or 0 with the
    // child's id in `child`.
    int Start(const std::string& path, const std::vector<std::string>& arguments,
              const std::vector<std::string>& environment, pid_t& child) const;

  private:
    void Note(int result);

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
    int problem = 0;  // errno value of the first step that failed
};

// Waits for a started program to end and takes it off the system's books. True when it ended by itself with
// code 0.
bool EndsWell(pid_t child);

}  // namespace permora::host
