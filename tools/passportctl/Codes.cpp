// SPDX-License-Identifier: MIT
#include "Command.h"
#include "Prompt.h"
#include "emulator/Emulator.h"

#include <QtCore/QDir>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryFile>

using namespace VelqorPassPort;

namespace {

/// An account operation behind a captcha: one command from the picture to the end, since a captcha
/// belongs to the client that fetched it.
class CodeCommand : public Command
{
protected:
    void declareAccount(CLI::App &app)
    {
        addAccount(app, m_account);
        addFile(app, "-o,--output", m_picture, "File for the captcha's picture");
    }
    void declareSource(CLI::App &app)
    {
        addFlag(app, "--from-emulator", m_fromEmulator,
                "Take captcha and code from a passport-emulator");
    }
    void declarePurpose(CLI::App &app)
    {
        addText(app, "--purpose", m_purpose, "What captcha and code are for");
    }

    // Each goes one step further than the one before it.
    std::optional<Exit> fetchCaptcha(Host &host);
    std::optional<Exit> solveCaptcha(Host &host);
    std::optional<Exit> sendCode(Host &host);
    std::optional<Exit> obtainCode(Host &host);

    static std::optional<Exit> ask(Host &host, const QString &question, bool secret,
                                   QString &answer);

    Account m_account;
    QString m_picture; ///< its file; empty: none that stays
    QString m_purpose = QStringLiteral("login");
    QString m_captcha; ///< the text in the picture
    QString m_code;
    bool m_remembers = false;

private:
    std::optional<Exit> askForCaptcha(Host &host);

    QByteArray m_bytes; ///< of the picture
    bool m_fromEmulator = false;
};

std::optional<Exit> CodeCommand::ask(Host &host, const QString &question, bool secret,
                                     QString &answer)
{
    const auto line = secret ? readSecret(question) : readAnswer(question);
    if (!line)
        return host.output().failure(Exit::Usage,
                                     QStringLiteral("no answer to \"%1\"").arg(question));
    answer = *line;
    return std::nullopt;
}

std::optional<Exit> CodeCommand::fetchCaptcha(Host &host)
{
    if (const auto end = host.prepare(m_remembers ? PassportDir::Needed : PassportDir::Optional))
        return end;
    QVariant data;
    const auto text = [](int number) { return QString::number(number); };
    const PassportCommunityError record = host.passport().reqCaptcha(
        data, text(160), text(60), text(300), text(4), m_purpose, QString());
    if (record.isError())
        return host.output().failure(QStringLiteral("captcha"), record);

    m_bytes =
        QByteArray::fromBase64(data.toMap().value(QStringLiteral("data")).toString().toLatin1());
    if (m_picture.isEmpty())
        return std::nullopt;
    QSaveFile file(m_picture);
    if (!file.open(QIODevice::WriteOnly) || file.write(m_bytes) != m_bytes.size() || !file.commit())
        return host.output().failure(Exit::Configuration,
                                     QStringLiteral("%1: %2").arg(m_picture, file.errorString()));
    return std::nullopt;
}

std::optional<Exit> CodeCommand::askForCaptcha(Host &host)
{
    const QString question = QStringLiteral("Text in ");
    if (!m_picture.isEmpty())
        return ask(host, question + m_picture, false, m_captcha);
    // For its owner alone, and gone with the answer.
    QTemporaryFile file(QDir::temp().filePath(QStringLiteral("passportctl-XXXXXX.png")));
    if (!file.open() || file.write(m_bytes) != m_bytes.size() || !file.flush())
        return host.output().failure(
            Exit::Configuration, QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    return ask(host, question + file.fileName(), false, m_captcha);
}

std::optional<Exit> CodeCommand::solveCaptcha(Host &host)
{
    if (const auto end = fetchCaptcha(host))
        return end;
    if (!m_fromEmulator)
        return askForCaptcha(host);
    m_captcha = Emulator::captchaText(host);
    return std::nullopt;
}

std::optional<Exit> CodeCommand::sendCode(Host &host)
{
    if (const auto end = solveCaptcha(host))
        return end;
    QVariant data;
    const PassportCommunityError record =
        host.passport().reqValidCode(data, m_captcha, m_account.user, m_account.phoneArea,
                                     QStringLiteral("en-us"), m_purpose, QString());
    if (record.isError())
        return host.output().failure(QStringLiteral("verification code"), record);
    return std::nullopt;
}

std::optional<Exit> CodeCommand::obtainCode(Host &host)
{
    if (const auto end = sendCode(host))
        return end;
    if (!m_fromEmulator)
        return ask(host, QStringLiteral("Code sent to ") + m_account.user, false, m_code);
    m_code = Emulator::verificationCode(host);
    return std::nullopt;
}

class Captcha : public CodeCommand
{
public:
    void declare(CLI::App &app) override
    {
        addRequiredFile(app, "-o,--output", m_picture, "File for the picture");
        declareSource(app);
        declarePurpose(app);
    }
    Exit run(Host &host) override
    {
        if (const auto end = fetchCaptcha(host))
            return *end;
        return host.output().success(QStringLiteral("Picture in %1").arg(m_picture), {},
                                     {{QStringLiteral("picture"), m_picture}});
    }
};

class SendCode : public CodeCommand
{
public:
    void declare(CLI::App &app) override
    {
        declareAccount(app);
        declareSource(app);
        declarePurpose(app);
    }
    Exit run(Host &host) override;
};

Exit SendCode::run(Host &host)
{
    if (const auto end = sendCode(host))
        return *end;
    return host.output().success(
        QStringLiteral("A code for %1 is on its way to %2").arg(m_purpose, m_account.user), {},
        {{QStringLiteral("user"), m_account.user}, {QStringLiteral("purpose"), m_purpose}});
}

class CodeSignIn : public CodeCommand
{
public:
    void declare(CLI::App &app) override
    {
        declareAccount(app);
        addFlag(app, "--remember", m_remembers, "Write the name to the passport directory");
        declareSource(app);
    }
    Exit run(Host &host) override;
};

Exit CodeSignIn::run(Host &host)
{
    if (const auto end = obtainCode(host))
        return *end;
    QVariantMap profile;
    const PassportCommunityError record = host.passport().reqCodeLogIn(
        m_account.user, m_account.phoneArea, m_captcha, m_code, profile, QString(), m_remembers);
    if (record.isError())
        return host.output().failure(QStringLiteral("sign-in"), record);
    const QString id = profile.value(QStringLiteral("userID")).toString();
    return host.output().success(
        QStringLiteral("Signed in at %1").arg(host.address()),
        {{QStringLiteral("user"), m_account.user}, {QStringLiteral("userID"), id}},
        {{QStringLiteral("user"), m_account.user}, {QStringLiteral("userID"), id}});
}

class Exists : public CodeCommand
{
public:
    void declare(CLI::App &app) override
    {
        declareAccount(app);
        declareSource(app);
        declarePurpose(app);
    }
    Exit run(Host &host) override;
};

Exit Exists::run(Host &host)
{
    if (const auto end = solveCaptcha(host))
        return *end;
    const PassportCommunityError record =
        host.passport().isUserExisted(m_purpose, m_captcha, m_account.user, m_account.phoneArea);
    if (record.isError())
        return host.output().failure(QStringLiteral("existence of ") + m_account.user, record);
    return host.output().success(QStringLiteral("%1 exists").arg(m_account.user), {},
                                 {{QStringLiteral("exists"), true}});
}

class ResetPassword : public CodeCommand
{
public:
    ResetPassword() { m_purpose = QStringLiteral("bpwd"); }
    void declare(CLI::App &app) override
    {
        declareAccount(app);
        declareSource(app);
    }
    Exit run(Host &host) override;
};

Exit ResetPassword::run(Host &host)
{
    if (const auto end = obtainCode(host))
        return *end;
    QString password;
    if (const auto end = ask(host, QStringLiteral("New password"), true, password))
        return *end;
    const PassportCommunityError record = host.passport().reqResetPassword(
        m_account.user, m_account.phoneArea, m_captcha, m_code, password, QString());
    if (record.isError())
        return host.output().failure(QStringLiteral("password reset"), record);
    return host.output().success(
        QStringLiteral("The password of %1 is changed").arg(m_account.user), {},
        {{QStringLiteral("user"), m_account.user}});
}

} // namespace

void addCodeCommands(Commands commands)
{
    commands.add<Captcha>("captcha", "Fetch a captcha's picture", "captcha -o captcha.png");
    commands.add<SendCode>("send-code", "Have a verification code sent",
                           "send-code --phone-area 86 13800000001");
    commands.add<CodeSignIn>("code-sign-in", "Sign in with a verification code",
                             "code-sign-in ada@example.com");
    commands.add<Exists>("exists", "Ask whether an account exists", "exists ada@example.com");
    commands.add<ResetPassword>("reset-password", "Set a new password with a verification code",
                                "reset-password ada@example.com");
}
