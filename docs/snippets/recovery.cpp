// SPDX-License-Identifier: MIT
#include <passport/Passport.h>

#include <QtCore/QByteArray>
#include <QtCore/QThread>

#include <functional>

using namespace VelqorPassPort;

//! [captcha]
const QString newPassword = QStringLiteral("bpwd"); // the service's word for this purpose

PassportCommunityError fetchPicture(Passport &passport, QByteArray &png)
{
    QVariant data;
    PassportCommunityError outcome =
        passport.reqCaptcha(data, QStringLiteral("120"), QStringLiteral("40"),
                            QStringLiteral("300"), QStringLiteral("4"), newPassword, QString());
    if (!outcome.isError())
        png = QByteArray::fromBase64(
            data.toMap().value(QStringLiteral("data")).toString().toLatin1());
    return outcome;
}
//! [captcha]

//! [code]
struct Account
{
    QString name;      // user name, mail address or phone number
    QString phoneArea; // of a phone number, such as "86"; otherwise empty
};

PassportCommunityError sendCode(Passport &passport, const Account &account, const QString &captcha)
{
    PassportCommunityError outcome =
        passport.isUserExisted(newPassword, captcha, account.name, account.phoneArea);
    if (outcome.isError()) // without an account: errorMessage "notExistErr"
        return outcome;
    QVariant answer;
    return passport.reqValidCode(answer, captcha, account.name, account.phoneArea,
                                 QStringLiteral("en"), newPassword, QString());
}
//! [code]

//! [reset]
enum class Ask { Nothing, Name, Captcha, Code, NewCode, LongerPassword, Support, Later };

Ask setNewPassword(Passport &passport, const Account &account, const QString &captcha,
                   const QString &code, const QString &password)
{
    const PassportCommunityError outcome = passport.reqResetPassword(
        account.name, account.phoneArea, captcha, code, password, QString());
    if (!outcome.isError())
        return Ask::Nothing;
    const QString &word = outcome.errorMessage;
    if (word == QLatin1String("codeErr"))
        return Ask::Code;
    if (word == QLatin1String("codeExpired") || word == QLatin1String("tooManyTries"))
        return Ask::NewCode;
    if (word == QLatin1String("pwdTooShort"))
        return Ask::LongerPassword;
    if (word == QLatin1String("captchaErr"))
        return Ask::Captcha;
    if (word == QLatin1String("notExistErr"))
        return Ask::Name;
    return outcome.errorCode == CommunityErrorCode::IllegalErr ? Ask::Support : Ask::Later;
}
//! [reset]

//! [page]
using Brought = std::function<void(QString name, QString password, QString phoneArea)>;

// `brought` runs on the thread of `receiver`, which must outlive the thread that is returned; the
// caller owns that one and waits for it before deleting it.
QThread *showForgottenPassword(const QString &passportDirectory, QObject *receiver,
                               const Brought &brought)
{
    QThread *thread = QThread::create([=] {
        Passport client; // this thread's own
        client.setPassportDir(passportDirectory);
        QObject::connect(&client, &Passport::userLoadSuccess, receiver, brought);
        client.openForgitURL(/*closes*/ false, QStringLiteral("/forgotten-password"),
                             QStringLiteral("en"));
    });
    thread->start();
    return thread;
}
//! [page]
