#include "tool/bus/session_user.h"

#include "tool/system/environment.h"

#include <grp.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tool {
namespace {

struct User
{
    uid_t user;
    gid_t group;
};

std::optional<User> OtherSessionUser()
{
    struct stat runtime = {};
    if (geteuid() != 0 || stat(Variable("XDG_RUNTIME_DIR").c_str(), &runtime) != 0 ||
        runtime.st_uid == 0) {
        return std::nullopt;
    }
    return User{runtime.st_uid, runtime.st_gid};
}

} // namespace

bool BecomeSessionUser()
{
    const auto other = OtherSessionUser();
    return !other || (setgroups(0, nullptr) == 0 &&
                      setresgid(other->group, other->group, other->group) == 0 &&
                      setresuid(other->user, other->user, other->user) == 0 &&
                      // The portal looks at who talks to it in /proc, which it may only of such a
                      // process.
                      prctl(PR_SET_DUMPABLE, 1) == 0);
}

// The library's function would change all threads.
bool ActAsSessionUser()
{
    constexpr auto same = static_cast<uid_t>(-1);
    const auto other = OtherSessionUser();
    return !other || syscall(SYS_setresuid, same, other->user, same) == 0;
}

} // namespace tool
