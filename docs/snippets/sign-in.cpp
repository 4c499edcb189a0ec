// SPDX-License-Identifier: MIT
#include <passport/Passport.h>

#include <QtCore/QByteArray>

using namespace VelqorPassPort;

//! [outcome]
enum class Next { SignedIn, AskPasswordAgain, ContactSupport, TryLater };

Next signIn(Passport &passport, const QString &name, const QString &password, QVariantMap &profile)
{
    const PassportCommunityError outcome =
        passport.logIn(name, password, QString(), profile, /*isRemember*/ true);
    if (!outcome.isError())
        return Next::SignedIn;
    if (outcome.errorMessage == QLatin1String("pwdErr"))
        return Next::AskPasswordAgain;
    if (outcome.errorCode == CommunityErrorCode::IllegalErr)
        return Next::ContactSupport;
    return Next::TryLater;
}
//! [outcome]

QString rememberedName(Passport &passport);

//! [remembered]
QString rememberedName(Passport &passport)
{
    return passport.getAccountInfo().value(QStringLiteral("name")).toString();
}
//! [remembered]

PassportCommunityError signInByCode(Passport &passport, const QString &name, QVariantMap &profile,
                                    QString (*ask)(const QByteArray &picture));

//! [code]
// `ask` shows a picture and returns what the user reads in it; without one, it asks for the code.
PassportCommunityError signInByCode(Passport &passport, const QString &name, QVariantMap &profile,
                                    QString (*ask)(const QByteArray &picture))
{
    const QString login = QStringLiteral("login");
    QVariant data;
    PassportCommunityError outcome =
        passport.reqCaptcha(data, QStringLiteral("120"), QStringLiteral("40"),
                            QStringLiteral("300"), QStringLiteral("4"), login, QString());
    if (outcome.isError())
        return outcome;
    const QByteArray base64 = data.toMap().value(QStringLiteral("data")).toString().toLatin1();
    const QString captcha = ask(QByteArray::fromBase64(base64));
    outcome = passport.reqValidCode(data, captcha, name, QString(), QStringLiteral("en"), login,
                                    QString());
    if (outcome.isError())
        return outcome;
    const QString code = ask(QByteArray());
    return passport.reqCodeLogIn(name, QString(), captcha, code, profile, QString(), true);
}
//! [code]
