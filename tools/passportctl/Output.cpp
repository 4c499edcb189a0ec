#include "Output.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cstdio>

using namespace VelqorPassPort;

namespace {

struct Explanation
{
    CommunityErrorCode::ErrorCode code;
    Exit exit;
    const char *words;
};

const Explanation explanations[] = {
    {CommunityErrorCode::NoError, Exit::Success, "success"},
    {CommunityErrorCode::AuthErr, Exit::Refused,
     "the password is wrong, or the session is not, or no longer, accepted"},
    {CommunityErrorCode::NetErr, Exit::Unreachable, "the service did not answer in time"},
    {CommunityErrorCode::EC_ConnectionRefusedError, Exit::Unreachable,
     "nothing listens at the service's address"},
    {CommunityErrorCode::EC_RemoteHostClosedError, Exit::Unreachable,
     "the connection broke off before the answer was complete"},
    {CommunityErrorCode::EC_HostNotFoundError, Exit::Unreachable,
     "the service's host name is unknown"},
    {CommunityErrorCode::EC_SslHandshakeFailedError, Exit::Unreachable,
     "no trusted connection: see the certificate store that 'passportctl doctor' prints"},
    {CommunityErrorCode::EC_ProtocolFailure, Exit::Unreachable,
     "the answer is not one of an account service"},
    {CommunityErrorCode::EC_ConfigDataError, Exit::Configuration,
     "the configuration has a member of the wrong form, or the chosen environment has no address"},
    {CommunityErrorCode::EC_FileNotExist, Exit::Configuration,
     "there is no such configuration file"},
    {CommunityErrorCode::EC_FileNotOpen, Exit::Configuration,
     "the configuration file cannot be opened"},
    {CommunityErrorCode::IllegalErr, Exit::Refused, "the service does not allow it"},
    {CommunityErrorCode::DbErr, Exit::Refused, "the service has a problem with its storage"},
    {CommunityErrorCode::UnknownErr, Exit::Refused, "the service failed without saying why"},
};

// What the account service says in a word of its own.
const QPair<QLatin1String, QLatin1String> serviceWords[] = {
    {QLatin1String("pwdErr"), QLatin1String("user name or password is wrong")},
    {QLatin1String("notExistErr"), QLatin1String("there is no such account")},
    {QLatin1String("captchaErr"), QLatin1String("that is not the text in the picture")},
    {QLatin1String("captchaExpired"), QLatin1String("the captcha is too old")},
    {QLatin1String("codeErr"), QLatin1String("the verification code is wrong")},
    {QLatin1String("codeExpired"), QLatin1String("the verification code is too old, or used")},
    {QLatin1String("tooManyTries"), QLatin1String("too many wrong codes; have a new one sent")},
    {QLatin1String("tooFrequent"), QLatin1String("a code was sent only a moment ago")},
    {QLatin1String("pwdTooShort"), QLatin1String("the new password is too short")},
};

const Explanation *explanationOf(CommunityErrorCode::ErrorCode code)
{
    const auto found = std::find_if(std::begin(explanations), std::end(explanations),
                                    [&](const Explanation &one) { return one.code == code; });
    return found == std::end(explanations) ? nullptr : found;
}

QString wordsOf(const PassportCommunityError &record)
{
    for (const auto &[word, words] : serviceWords) {
        if (record.errorMessage == word)
            return words;
    }
    const QString meaning = meaningOf(record.errorCode);
    if (!meaning.isEmpty())
        return meaning;
    return record.errorMessage.isEmpty() ? QStringLiteral("the service could not be used")
                                         : record.errorMessage;
}

QString numberOf(const PassportCommunityError &record)
{
    return QStringLiteral("0x%1").arg(static_cast<unsigned>(record.errorCode), 8, 16,
                                      QLatin1Char('0'));
}

} // namespace

QString meaningOf(CommunityErrorCode::ErrorCode code)
{
    const Explanation *known = explanationOf(code);
    return known ? QString::fromLatin1(known->words) : QString();
}

Exit exitOf(const PassportCommunityError &record)
{
    if (!record.isError())
        return Exit::Success;
    if (const Explanation *known = explanationOf(record.errorCode))
        return known->exit;
    // What the service says has a code up to NetErr; the rest is the way to it.
    return record.errorCode < CommunityErrorCode::NetErr ? Exit::Refused : Exit::Unreachable;
}

Exit Output::success(const QString &sentence, const Rows &rows, const QJsonObject &data) const
{
    if (m_json) {
        QJsonObject object = data;
        object.insert(QStringLiteral("ok"), true);
        printObject(object);
    }
    report(sentence, rows);
    return Exit::Success;
}

void Output::report(const QString &sentence, const Rows &rows) const
{
    if (m_json)
        return;
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << sentence << '\n';
    int width = 0;
    for (const auto &row : rows)
        width = std::max(width, row.first.size());
    for (const auto &row : rows)
        out << "  " << row.first.leftJustified(width) << "  " << row.second << '\n';
}

Exit Output::failure(const QString &operation, const PassportCommunityError &record) const
{
    const Exit exit = exitOf(record);
    if (m_json) {
        const QJsonObject error{{QStringLiteral("code"), static_cast<int>(record.errorCode)},
                                {QStringLiteral("name"), record.errorName},
                                {QStringLiteral("message"), record.errorMessage},
                                {QStringLiteral("text"), wordsOf(record)}};
        printObject({{QStringLiteral("ok"), false}, {QStringLiteral("error"), error}});
        return exit;
    }
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << "passportctl: " << operation << ": " << wordsOf(record) << " (" << record.errorName
        << ", " << numberOf(record) << ")\n";
    return exit;
}

Exit Output::failure(Exit exit, const QString &sentence) const
{
    if (m_json) {
        printObject({{QStringLiteral("ok"), false},
                     {QStringLiteral("error"), QJsonObject{{QStringLiteral("text"), sentence}}}});
        return exit;
    }
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << "passportctl: " << sentence << '\n';
    return exit;
}

Output::Rows Output::rowsOf(const QVariantMap &map)
{
    Rows rows;
    for (auto field = map.begin(); field != map.end(); ++field) {
        const QString text =
            field->type() == QVariant::StringList || field->type() == QVariant::List
                ? field->toStringList().join(QStringLiteral(", "))
                : field->toString();
        if (!text.isEmpty())
            rows.append({field.key(), text});
    }
    return rows;
}

void Output::printObject(const QJsonObject &object) const
{
    const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout);
}
