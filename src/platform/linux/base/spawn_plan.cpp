#include "platform/linux/base/spawn_plan.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace permora::host {
namespace {

// The system does not write to these texts. Its interface predates const.
std::vector<char*> Words(const std::vector<std::string>& texts) {
    std::vector<char*> words;
    words.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        words.push_back(const_cast<char*>(text.c_str()));
    words.push_back(nullptr);
    return words;
}

}  // namespace

SpawnPlan::SpawnPlan(int outputTarget, Ties ties, int inputSource) {
    posix_spawn_file_actions_init(&actions);
    // The pipe first: if this process was started without some of the three, its descriptor may be one of
    // them.
    Note(outputTarget < 0
             ? posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0)
             : posix_spawn_file_actions_adddup2(&actions, outputTarget, STDOUT_FILENO));
    Note(inputSource < 0 ? posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0)
                         : posix_spawn_file_actions_adddup2(&actions, inputSource, STDIN_FILENO));
    Note(posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0));
    Note(posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1));

    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    Note(posix_spawnattr_setsigmask(&attributes, &signals));
    sigfillset(&signals);
    Note(posix_spawnattr_setsigdefault(&attributes, &signals));
    Note(posix_spawnattr_setpgroup(&attributes, 0));
    const int tie = ties == Ties::kOwnGroup ? POSIX_SPAWN_SETPGROUP : POSIX_SPAWN_SETSID;
    Note(posix_spawnattr_setflags(&attributes,
                                  static_cast<short>(tie | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF)));
}

SpawnPlan::~SpawnPlan() {
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
}

int SpawnPlan::Start(const std::string& path, const std::vector<std::string>& arguments,
                     const std::vector<std::string>& environment, pid_t& child) const {
    if (problem != 0) return problem;
    std::vector<std::string> command = {path};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return posix_spawn(&child, path.c_str(), &actions, &attributes, Words(command).data(),
                       Words(environment).data());
}

void SpawnPlan::Note(int result) {
    if (problem == 0) problem = result;
}

bool EndsWell(pid_t child) {
    int status = 0;
    pid_t reaped = -1;
    do {
        reaped = waitpid(child, &status, 0);
    } while (reaped < 0 && errno == EINTR);
    return reaped == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace permora::host
