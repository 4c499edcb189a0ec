#pragma once

#include "Output.h"

#include <passport/Passport.h>
#include <passport/PassportNubelo.h>

#include <QtCore/QJsonValue>
#include <QtCore/QString>

#include <functional>
#include <memory>
#include <optional>

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

    /// Initialises the passport directory, if one is given, and configures the cloud; on failure
    /// says so and gives the program's end.
    std::optional<Exit> prepare(bool needsPassportDir);

    /// Signs in, asking for the password, and goes on with the profile.
    using Authenticated = std::function<Exit(const QVariantMap &profile)>;
    Exit withAccount(const QString &user, const QString &phoneArea, bool remember,
                     const Authenticated &then);

    const QString &passportDir() const { return m_options.passportDir; }
    VelqorPassPort::Passport &passport() { return m_passport; }
    const Output &output() const { return m_output; }

    /// Puts the options in force: the file, then the environment, then the address. Without any of
    /// them the environment "local", a passport-emulator on this machine.
    VelqorPassPort::PassportCommunityError configure();

    /// The address of the chosen environment's account service; for telling the user.
    QString address();

    /// The service's answer to "status", which the facade does not hand out.
    VelqorPassPort::PassportCommunityError requestStatus(QVariant &result);

    /// The result of one of a passport-emulator's own calls, such as "inbox", sent with `body`
    /// unless that is empty; undefined when no emulator answers or it refuses.
    QJsonValue askEmulator(const QString &call, const QVariantMap &body = {});

private:
    QString initialize(bool needsPassportDir);
    VelqorPassPort::PassportNubelo &client();

    HostOptions m_options;
    Output m_output;
    VelqorPassPort::Passport m_passport;
    std::unique_ptr<VelqorPassPort::PassportNubelo> m_client; // of what the facade does not offer
};
