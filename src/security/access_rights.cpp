#include "security/access_rights.h"
