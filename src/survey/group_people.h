// Who is in a group, by itself or through groups in it: people in the place of groups.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/sid.h"

namespace permora {

struct GroupPerson {
    nt::Sid sid;
    // The groups through which the person is in it, from the outside to the inside, without the group itself;
    // the shortest way.
    std::vector<nt::Sid> through;
};

struct GroupPeople {
    std::vector<GroupPerson> people;  // each once
    // Groups in it, or itself, of whoever has logged on in some way: nobody keeps a list of their members.
    std::vector<nt::Sid> open;
    // Groups in it, or itself, whose members could not be asked for. Others may be in it then.
    struct Unknown {
        nt::Sid group;
        DWORD error;
    };
    std::vector<Unknown> unknown;
};

// Asks for the members of each group once. One thread at a time.
class GroupDirectory {
  public:
    struct Member {
        nt::Sid sid;
        bool isGroup = false;
    };
    struct Answer {
        DWORD error = ERROR_SUCCESS;
        std::vector<Member> members;  // direct ones
        bool isOpen = false;          // nobody keeps a list of them
    };
    using MembersOf = std::function<Answer(const nt::Sid& group)>;

    // Those of the system (platform/group_members.h).
    GroupDirectory();
    explicit GroupDirectory(MembersOf members) : membersOf(std::move(members)) {}

    // Groups that contain each other are no trouble.
    GroupPeople PeopleOf(const nt::Sid& group);

  private:
    const Answer& Ask(const nt::Sid& group);

    MembersOf membersOf;
    std::unordered_map<std::string, Answer> answers;
};

}  // namespace permora
