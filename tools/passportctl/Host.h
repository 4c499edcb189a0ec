#pragma once

#include "Output.h"

#include <passport/Passport.h>
#include <passport/PassportNubelo.h>

#include <QtCore/QString>

#include <functional>
#include <memory>

/// Where the account service and the passport directory are; empty texts are not set.
struct HostOptions
{
    QString configFile;
    QString environment;
    QString address;
    QString passportDir;
};

/// A host of the library that lives for one command.
class Host
{
public:
    Host(const HostOptions &options, const Output &output) : m_options(options), m_output(output) {}

    Exit signIn(const QString &user, const QString &phoneArea, bool showToken, bool remember);
    Exit profile(const QString &user, const QString &phoneArea);
    Exit account(bool forget);
    Exit status();
    Exit config();

    /// Puts the options in force: the file, then the environment, then the address. Without any of
    /// them the environment "local", a passport-emulator on this machine.
    VelqorPassPort::PassportCommunityError configure();

    /// The address of the chosen environment's account service; for telling the user.
    QString address();

    /// The service's answer to "status", which the facade does not hand out.
    VelqorPassPort::PassportCommunityError requestStatus(QVariant &result);

private:
    using Authenticated = std::function<Exit(const QVariantMap &)>;
    Exit withAccount(const QString &user, const QString &phoneArea, bool remember,
                     const Authenticated &then);
    QString initialize(bool needsPassportDir);

    HostOptions m_options;
    Output m_output;
    VelqorPassPort::Passport m_passport;
    std::unique_ptr<VelqorPassPort::PassportNubelo> m_client; // of requestStatus() alone
};
