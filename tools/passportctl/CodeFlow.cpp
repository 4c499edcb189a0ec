#include "CodeFlow.h"

#include "Prompt.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>
#include <QtCore/QSaveFile>

using namespace VelqorPassPort;

bool CodeFlow::refused(const QString &operation, const PassportCommunityError &record)
{
    if (record.errorCode == CommunityErrorCode::NoError)
        return false;
    m_end = m_host.output().failure(operation, record);
    return true;
}

bool CodeFlow::ask(const QString &question, bool secret, QString &answer)
{
    const auto line = secret ? readSecret(question) : readAnswer(question);
    if (!line) {
        m_end = m_host.output().failure(Exit::Usage,
                                        QStringLiteral("no answer to \"%1\"").arg(question));
        return false;
    }
    answer = *line;
    return true;
}

bool CodeFlow::fetchCaptcha()
{
    if (const auto end = m_host.prepare(m_options.remember)) {
        m_end = *end;
        return false;
    }
    QVariant data;
    const auto text = [](int number) { return QString::number(number); };
    const PassportCommunityError record = m_host.passport().reqCaptcha(
        data, text(160), text(60), text(300), text(4), m_options.purpose, QString());
    if (refused(QStringLiteral("captcha"), record))
        return false;

    if (m_options.picture.isEmpty())
        m_options.picture = QDir::temp().filePath(QStringLiteral("passportctl-captcha.png"));
    const std::string picture = m_host.passport().deBase64(
        data.toMap().value(QStringLiteral("data")).toString().toStdString());
    QSaveFile file(m_options.picture);
    const auto size = static_cast<qint64>(picture.size());
    if (!file.open(QIODevice::WriteOnly) || file.write(picture.data(), size) != size ||
        !file.commit()) {
        m_end = m_host.output().failure(
            Exit::Configuration,
            QStringLiteral("%1: %2").arg(m_options.picture, file.errorString()));
        return false;
    }
    return true;
}

QString CodeFlow::captchaFromEmulator()
{
    const QJsonArray requests = m_host.askEmulator(QStringLiteral("requests")).toArray();
    const QString path = requests.last().toObject().value(QStringLiteral("path")).toString();
    const QString id = path.section(QLatin1Char('/'), -1);
    return m_host.askEmulator(QStringLiteral("captcha/") + id)
        .toObject()
        .value(QStringLiteral("answer"))
        .toString();
}

QString CodeFlow::codeFromEmulator()
{
    const QJsonArray inbox = m_host.askEmulator(QStringLiteral("inbox")).toArray();
    return inbox.last().toObject().value(QStringLiteral("code")).toString();
}

bool CodeFlow::solveCaptcha()
{
    if (!fetchCaptcha())
        return false;
    if (!m_options.fromEmulator)
        return ask(QStringLiteral("Text in ") + m_options.picture, false, m_captcha);
    m_captcha = captchaFromEmulator();
    return true;
}

bool CodeFlow::obtainCode()
{
    if (!solveCaptcha())
        return false;
    QVariant data;
    const PassportCommunityError record =
        m_host.passport().reqValidCode(data, m_captcha, m_options.user, m_options.phoneArea,
                                       m_options.language, m_options.purpose, QString());
    return !refused(QStringLiteral("verification code"), record);
}

Exit CodeFlow::captcha()
{
    if (!fetchCaptcha())
        return m_end;
    return m_host.output().success(QStringLiteral("Picture in %1").arg(m_options.picture), {},
                                   {{QStringLiteral("picture"), m_options.picture}});
}

Exit CodeFlow::sendCode()
{
    if (!obtainCode())
        return m_end;
    return m_host.output().success(
        QStringLiteral("A code for %1 is on its way to %2").arg(m_options.purpose, m_options.user),
        {},
        {{QStringLiteral("user"), m_options.user}, {QStringLiteral("purpose"), m_options.purpose}});
}

Exit CodeFlow::codeSignIn()
{
    m_options.purpose = QStringLiteral("login");
    if (!obtainCode())
        return m_end;
    if (m_options.fromEmulator)
        m_code = codeFromEmulator();
    else if (!ask(QStringLiteral("Code sent to ") + m_options.user, false, m_code))
        return m_end;
    QVariantMap profile;
    const PassportCommunityError record =
        m_host.passport().reqCodeLogIn(m_options.user, m_options.phoneArea, m_captcha, m_code,
                                       profile, QString(), m_options.remember);
    if (refused(QStringLiteral("sign-in"), record))
        return m_end;
    const QString id = profile.value(QStringLiteral("userID")).toString();
    return m_host.output().success(
        QStringLiteral("Signed in at %1").arg(m_host.address()),
        {{QStringLiteral("user"), m_options.user}, {QStringLiteral("userID"), id}},
        {{QStringLiteral("user"), m_options.user}, {QStringLiteral("userID"), id}});
}

Exit CodeFlow::exists()
{
    if (!solveCaptcha())
        return m_end;
    const PassportCommunityError record = m_host.passport().isUserExisted(
        m_options.purpose, m_captcha, m_options.user, m_options.phoneArea);
    if (refused(QStringLiteral("existence of ") + m_options.user, record))
        return m_end;
    return m_host.output().success(QStringLiteral("%1 exists").arg(m_options.user), {},
                                   {{QStringLiteral("exists"), true}});
}

Exit CodeFlow::resetPassword()
{
    m_options.purpose = QStringLiteral("bpwd");
    if (!obtainCode())
        return m_end;
    QString password;
    if (m_options.fromEmulator)
        m_code = codeFromEmulator();
    else if (!ask(QStringLiteral("Code sent to ") + m_options.user, false, m_code))
        return m_end;
    if (!ask(QStringLiteral("New password"), true, password))
        return m_end;
    const PassportCommunityError record = m_host.passport().reqResetPassword(
        m_options.user, m_options.phoneArea, m_captcha, m_code, password, QString());
    if (refused(QStringLiteral("password reset"), record))
        return m_end;
    return m_host.output().success(
        QStringLiteral("The password of %1 is changed").arg(m_options.user), {},
        {{QStringLiteral("user"), m_options.user}});
}
