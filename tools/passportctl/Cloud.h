#pragma once

#include "Output.h"

#include <passport/PassportNubelo.h>

#include <QtCore/QString>

/// Where the account service is; empty texts are not set.
struct CloudOptions
{
    QString configFile;
    QString environment;
    QString address;
};

/// The account operations of the command line on one cloud client.
class Cloud
{
public:
    Cloud(const CloudOptions &options, const Output &output) : m_options(options), m_output(output)
    {
    }

    Exit signIn(const QString &user, const QString &phoneArea, bool showToken);
    Exit profile(const QString &user, const QString &phoneArea);
    Exit status();
    Exit config();

    /// Puts the options in force: the file, then the environment, then the address. Without any of
    /// them the environment "local", a passport-emulator on this machine.
    VelqorPassPort::PassportCommunityError configure();

    /// The address of the chosen environment's account service; for telling the user.
    QString address();
    VelqorPassPort::PassportCommunityError requestStatus(QVariant &result);

private:
    using Authenticated = std::function<Exit(const QVariantMap &)>;
    Exit withAccount(const QString &user, const QString &phoneArea, const Authenticated &then);

    CloudOptions m_options;
    Output m_output;
    VelqorPassPort::PassportNubelo m_client;
};
