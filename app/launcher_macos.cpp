#include "app/launcher.h"
#include "jobs/text_codec.h"

#include <QProcess>

#include <Security/Authorization.h>

// AuthorizationExecuteWithPrivileges is deprecated, but nothing else asks for the password and
// starts a program without an installed helper.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

bool AcquireAdministratorRight(AuthorizationRef authorization)
{
    AuthorizationItem item = {"system.privilege.admin", 0, nullptr, 0};
    const AuthorizationRights rights = {1, &item};
    const AuthorizationFlags flags = kAuthorizationFlagInteractionAllowed |
                                     kAuthorizationFlagExtendRights |
                                     kAuthorizationFlagPreAuthorize; // the password prompt
    return AuthorizationCopyRights(authorization, &rights, kAuthorizationEmptyEnvironment, flags,
                                   nullptr) == errAuthorizationSuccess;
}

} // namespace

void RelaunchAsAdministrator(const QString& program)
{
    // Neither used nor freed on purpose: the launcher exits at once.
    [[maybe_unused]] const auto* const spare = new QProcess;

    char start[] = "start";
    char* const arguments[] = {start, nullptr};
    const QByteArray path = ToEightBit(program);

    AuthorizationRef authorization = nullptr;
    if (AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults,
                            &authorization) != errAuthorizationSuccess) {
        return;
    }
    if (AcquireAdministratorRight(authorization)) {
        // The result is not checked, and the program not waited for.
        AuthorizationExecuteWithPrivileges(authorization, path.constData(),
                                           kAuthorizationFlagDefaults, arguments, nullptr);
    }
    AuthorizationFree(authorization, kAuthorizationFlagDestroyRights);
}
