#include "platform/administrator.h"

namespace permora {

bool IsAdministrator() {
    return true;
}

bool CanAskForAdministrator() {
    return false;
}

AdministratorStart StartAsAdministrator(const std::vector<std::string>& /*arguments*/,
                                        AdministratorWait /*wait*/, int& /*exitCode*/) {
    return AdministratorStart::kNobodyAsks;
}

std::string DisplayForAdministrator() {
    return {};
}

bool IsStartedForUser() {
    return false;
}

bool UseDisplayOfUser(const std::string& /*path*/) {
    return false;
}

void TellOfStart() {}

}  // namespace permora
