// SPDX-License-Identifier: MIT
#pragma once

#include "Output.h"

#include <passport/Passport.h>
#include <passport/PassportNubelo.h>

#include <QtCore/QString>

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

/// Whose account a command is about.
struct Account
{
    QString user;
    QString phoneArea; ///< of a user who is known by a phone number
};

enum class PassportDir { Optional, Needed };

/// A host of the library that lives for one command.
///
/// What can fail and gives a std::optional<Exit> has, with an Exit, printed the failure: the
/// command ends with it.
class Host
{
public:
    Host(const HostOptions &options, const Output &output) : m_options(options), m_output(output) {}

    /// Initialises the passport directory, if one is given.
    std::optional<Exit> initialize(PassportDir need);

    /// What keeps the library from using a document of the passport directory; empty: nothing.
    static QString problemOfDocument(const QString &path);

    const HostOptions &options() const { return m_options; }

    /// What the options put over the configuration file: the environment and the address. Without
    /// any of the three the environment "local", a passport-emulator on this machine.
    QVariantMap overrides() const;

    /// Puts the options in force: the file and then the overrides().
    VelqorPassPort::PassportCommunityError applyOptions();
    std::optional<Exit> configure(); ///< the same

    /// initialize() and configure().
    std::optional<Exit> prepare(PassportDir need = PassportDir::Optional);

    /// Asks for the password and signs in; after prepare().
    std::optional<Exit> signIn(const Account &account, bool remember, QVariantMap &profile);

    const QString &passportDir() const { return m_options.passportDir; }
    const Output &output() const { return m_output; }
    VelqorPassPort::Passport &passport() { return m_passport; }

    /// A client with the same configuration, for what the facade does not offer.
    VelqorPassPort::PassportNubelo &client();

    /// The address of the chosen environment's account service; for telling the user.
    QString address();

    /// The service's answer to "status", which the facade does not hand out.
    VelqorPassPort::PassportCommunityError requestStatus(QVariant &result);

private:
    HostOptions m_options;
    Output m_output;
    VelqorPassPort::Passport m_passport;
    std::unique_ptr<VelqorPassPort::PassportNubelo> m_client;
};
