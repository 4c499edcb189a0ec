#include "Words.h"

#include <QtCore/QCoreApplication>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

namespace {

struct ServiceWord
{
    QLatin1String word;
    const char *text;
};

const ServiceWord serviceWords[] = {
    {QLatin1String("pwdErr"), QT_TRANSLATE_NOOP("Words", "The name or the password is wrong.")},
    {QLatin1String("captchaErr"),
     QT_TRANSLATE_NOOP("Words", "Those are not the characters in the picture.")},
    {QLatin1String("captchaExpired"),
     QT_TRANSLATE_NOOP("Words", "The picture is too old. Please take the new one.")},
    {QLatin1String("codeErr"), QT_TRANSLATE_NOOP("Words", "The verification code is wrong.")},
    {QLatin1String("codeExpired"),
     QT_TRANSLATE_NOOP("Words", "The verification code is too old. Please have a new one sent.")},
    {QLatin1String("tooManyTries"),
     QT_TRANSLATE_NOOP("Words", "Too many wrong codes. Please have a new one sent.")},
    {QLatin1String("tooFrequent"),
     QT_TRANSLATE_NOOP("Words", "A code was sent just now. Please wait a minute for the next.")},
    {QLatin1String("notExistErr"), QT_TRANSLATE_NOOP("Words", "There is no such account.")},
};

struct CodeWord
{
    Code::ErrorCode code;
    const char *text;
};

const CodeWord codeWords[] = {
    {Code::AuthErr, QT_TRANSLATE_NOOP("Words", "Your session has ended. Please sign in again.")},
    {Code::IllegalErr, QT_TRANSLATE_NOOP("Words", "This account is locked.")},
    {Code::DbErr, QT_TRANSLATE_NOOP("Words", "The service is out of order. Please try later.")},
    {Code::EC_ConnectionRefusedError,
     QT_TRANSLATE_NOOP("Words", "The service does not answer. Please try later.")},
    {Code::EC_RemoteHostClosedError,
     QT_TRANSLATE_NOOP("Words", "The connection broke off. Please try again.")},
    {Code::EC_HostNotFoundError,
     QT_TRANSLATE_NOOP("Words", "The service cannot be found. Is this computer online?")},
    {Code::EC_TimeoutError,
     QT_TRANSLATE_NOOP("Words", "The service took too long. Please try again.")},
    {Code::EC_SslHandshakeFailedError,
     QT_TRANSLATE_NOOP("Words", "The connection to the service would not be safe.")},
    {Code::EC_OperationCanceledError, QT_TRANSLATE_NOOP("Words", "This was cancelled.")},
    {Code::EC_IsRuning, QT_TRANSLATE_NOOP("Words", "Please wait for the answer before.")},
};

QString translated(const char *text)
{
    return QCoreApplication::translate("Words", text);
}

} // namespace

QString wordsFor(const PassportCommunityError &outcome)
{
    if (outcome.errorCode == Code::NoError)
        return {};
    // The word says more than the code, which a wrong password shares with an ended session.
    for (const ServiceWord &known : serviceWords) {
        if (outcome.errorMessage == known.word)
            return translated(known.text);
    }
    for (const CodeWord &known : codeWords) {
        if (outcome.errorCode == known.code)
            return translated(known.text);
    }
    return translated(QT_TRANSLATE_NOOP("Words", "That did not work (%1).")).arg(outcome.errorName);
}
