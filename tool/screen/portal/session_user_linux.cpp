#include "tool/screen/portal/session_user.h"
#include "tool/system/environment.h"

#include <grp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

bool BecomeSessionUser()
{
    struct stat runtime = {};
    if (geteuid() != 0 || stat(Variable("XDG_RUNTIME_DIR").c_str(), &runtime) != 0 ||
        runtime.st_uid == 0) {
        return true;
    }
    return setgroups(0, nullptr) == 0 &&
           setresgid(runtime.st_gid, runtime.st_gid, runtime.st_gid) == 0 &&
           setresuid(runtime.st_uid, runtime.st_uid, runtime.st_uid) == 0 &&
           // The portal looks at who talks to it in /proc, which it may only of such a process.
           prctl(PR_SET_DUMPABLE, 1) == 0;
}

} // namespace tool
