#include "app/launcher.h"
#include "jobs/text_codec.h"

#include <QStringList>
#include <QTest>

#include <Security/Authorization.h>

namespace {

// What the stand-in returns, and how it was called.
OSStatus g_create = 0;
OSStatus g_copy = 0;
OSStatus g_execute = 0;
QStringList g_calls;

AuthorizationRef Reference()
{
    static char object = 0;
    return reinterpret_cast<AuthorizationRef>(&object);
}

} // namespace

OSStatus AuthorizationCreate(const AuthorizationRights* rights,
                             const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                             AuthorizationRef* authorization)
{
    g_calls << QString("create rights=%1 environment=%2 flags=%3")
                   .arg(rights != nullptr)
                   .arg(environment != nullptr)
                   .arg(flags);
    *authorization = g_create == 0 ? Reference() : nullptr;
    return g_create;
}

OSStatus AuthorizationCopyRights(AuthorizationRef authorization, const AuthorizationRights* rights,
                                 const AuthorizationEnvironment* environment,
                                 AuthorizationFlags flags, AuthorizationRights** authorizedRights)
{
    const AuthorizationItem& item = rights->items[0];
    g_calls << QString("copy ours=%1 count=%2 right=%3 value=%4/%5 itemFlags=%6 environment=%7 "
                       "flags=%8 out=%9")
                   .arg(authorization == Reference())
                   .arg(rights->count)
                   .arg(item.name)
                   .arg(item.valueLength)
                   .arg(item.value != nullptr)
                   .arg(item.flags)
                   .arg(environment != nullptr)
                   .arg(flags, 0, 16)
                   .arg(authorizedRights != nullptr);
    return g_copy;
}

OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization, const char* pathToTool,
                                            AuthorizationFlags options, char* const* arguments,
                                            void** communicationsPipe)
{
    QStringList vector;
    for (; *arguments != nullptr; ++arguments) {
        vector << *arguments;
    }
    g_calls << QString("execute ours=%1 path=%2 options=%3 arguments=%4 pipe=%5")
                   .arg(authorization == Reference())
                   .arg(QString(QByteArray(pathToTool).toHex()))
                   .arg(options)
                   .arg(vector.join(','))
                   .arg(communicationsPipe != nullptr);
    return g_execute;
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags)
{
    g_calls << QString("free ours=%1 flags=%2").arg(authorization == Reference()).arg(flags);
    return 0;
}

class LauncherMacosTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        InstallTextCodec("GB2312");
        g_calls.clear();
        g_create = g_copy = g_execute = 0;
    }

    void grantedRightsStartTheProgramAndAreFreed()
    {
        RelaunchAsAdministrator(QString::fromUtf8("/a/\u4e2d"));
        QCOMPARE(g_calls, QStringList({kCreate, kCopy, kExecute, kFree}));
    }

    void aStartThatFailsIsNotNoticed()
    {
        g_execute = -60031;
        RelaunchAsAdministrator(QString::fromUtf8("/a/\u4e2d"));
        QCOMPARE(g_calls, QStringList({kCreate, kCopy, kExecute, kFree}));
    }

    void refusedRightsAreFreedAndNothingStarts()
    {
        g_copy = -60006;
        RelaunchAsAdministrator("/a");
        QCOMPARE(g_calls, QStringList({kCreate, kCopy, kFree}));
    }

    void withoutAReferenceThereIsNothingToFree()
    {
        g_create = -60008;
        RelaunchAsAdministrator("/a");
        QCOMPARE(g_calls, QStringList({kCreate}));
    }

private:
    const QString kCreate = "create rights=0 environment=0 flags=0";
    const QString kCopy =
        "copy ours=1 count=1 right=system.privilege.admin value=0/0 itemFlags=0 environment=0 "
        "flags=13 out=0";
    const QString kExecute =
        "execute ours=1 path=2f612fd6d0 options=0 arguments=start pipe=0"; // in GB2312
    const QString kFree = "free ours=1 flags=8";
};

QTEST_GUILESS_MAIN(LauncherMacosTest)
#include "launcher_macos_test.moc"
