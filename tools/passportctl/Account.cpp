// SPDX-License-Identifier: MIT
#include "Command.h"

#include <config/PassportDirectory_p.h>

#include <QtCore/QFile>

using namespace VelqorPassPort;

namespace {

class SignIn : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addAccount(app, m_account);
        addFlag(app, "--show-token", m_showsToken, "Print the session token too");
        addFlag(app, "--remember", m_remembers,
                "Write name and password to the passport directory, as the library does for hosts");
    }
    Exit run(Host &host) override;

private:
    Account m_account;
    bool m_showsToken = false;
    bool m_remembers = false;
};

Exit SignIn::run(Host &host)
{
    const auto need = m_remembers ? PassportDir::Needed : PassportDir::Optional;
    if (const auto end = host.prepare(need))
        return *end;
    QVariantMap profile;
    if (const auto end = host.signIn(m_account, m_remembers, profile))
        return *end;

    const QString id = profile.value(QStringLiteral("userID")).toString();
    Output::Rows rows{{QStringLiteral("user"), m_account.user}, {QStringLiteral("userID"), id}};
    QJsonObject data{{QStringLiteral("user"), m_account.user}, {QStringLiteral("userID"), id}};
    if (m_showsToken) {
        const QString token = host.passport().token();
        rows.append({QStringLiteral("token"), token});
        data.insert(QStringLiteral("token"), token);
    }
    // The library does not report a file that it could not write.
    if (m_remembers) {
        const QJsonObject kept = host.passport().getAccountInfo();
        const bool isKept = kept.value(QStringLiteral("name")).toString() == m_account.user;
        rows.append(
            {QStringLiteral("remembered"), isKept ? QStringLiteral("yes") : QStringLiteral("no")});
        data.insert(QStringLiteral("remembered"), isKept);
    }
    return host.output().success(QStringLiteral("Signed in at %1").arg(host.address()), rows, data);
}

class Profile : public Command
{
public:
    void declare(CLI::App &app) override { addAccount(app, m_account); }
    Exit run(Host &host) override;

private:
    Account m_account;
};

Exit Profile::run(Host &host)
{
    if (const auto end = host.prepare())
        return *end;
    QVariantMap profile;
    if (const auto end = host.signIn(m_account, false, profile))
        return *end;
    // The sign-in succeeds without the profile; whoever asks for the profile wants to know.
    const PassportCommunityError record = host.passport().reqGetUserInfo(profile, QString());
    if (record.isError())
        return host.output().failure(QStringLiteral("profile"), record);
    profile.remove(QStringLiteral("token"));
    return host.output().success(
        QStringLiteral("Profile of %1").arg(m_account.user), Output::rowsOf(profile),
        {{QStringLiteral("profile"), QJsonObject::fromVariantMap(profile)}});
}

class RememberedAccount : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addFlag(app, "--forget", m_forgets, "Remove it, with its password");
    }
    Exit run(Host &host) override;

private:
    static Exit forget(const Host &host, const QString &name);

    bool m_forgets = false;
};

Exit RememberedAccount::run(Host &host)
{
    if (const auto end = host.initialize(PassportDir::Needed))
        return *end;
    const QJsonObject account = host.passport().getAccountInfo();
    const QString name = account.value(QStringLiteral("name")).toString();
    if (m_forgets)
        return forget(host, name);
    if (name.isEmpty())
        return host.output().success(QStringLiteral("No account is remembered"), {},
                                     {{QStringLiteral("remembered"), false}});
    const bool hasPassword = account.contains(QStringLiteral("password"));
    return host.output().success(
        QStringLiteral("Remembered account"),
        {{QStringLiteral("name"), name},
         {QStringLiteral("password"), hasPassword ? QStringLiteral("remembered, not shown")
                                                  : QStringLiteral("not remembered")}},
        {{QStringLiteral("remembered"), true},
         {QStringLiteral("name"), name},
         {QStringLiteral("hasPassword"), hasPassword}});
}

Exit RememberedAccount::forget(const Host &host, const QString &name)
{
    QFile file(PassportDirectory(host.passportDir()).accountFile());
    const bool isThere = file.exists();
    if (isThere && !file.remove())
        return host.output().failure(
            Exit::Configuration, QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    const QString sentence =
        !isThere ? QStringLiteral("No account was remembered")
                 : QStringLiteral("Forgot %1, removed %2")
                       .arg(name.isEmpty() ? QStringLiteral("nobody") : name, file.fileName());
    return host.output().success(sentence, {},
                                 {{QStringLiteral("remembered"), false},
                                  {QStringLiteral("forgotten"), isThere},
                                  {QStringLiteral("name"), name}});
}

} // namespace

void addAccountCommands(Commands commands)
{
    commands.add<SignIn>("sign-in", "Sign in with a password",
                         "sign-in --environment local ada@example.com");
    commands.add<Profile>("profile", "Sign in and print the account's profile",
                          "--json profile ada@example.com");
    commands.add<RememberedAccount>("account", "Show the remembered account",
                                    "account --passport-dir passport-dir --forget");
}
