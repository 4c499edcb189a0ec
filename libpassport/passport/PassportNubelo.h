// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"
#include "PassportCommunityError.h"

#include <nubelo/Error.h>
#include <nubelo/Manager.h>
#include <nubelo/Reply.h>

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QThread>
#include <QtCore/QVariant>
#include <QtCore/QVariantList>
#include <QtCore/QVariantMap>

#include <functional>

namespace VelqorPassPort {

/// The client of the account cloud: turns the request library's asynchronous replies into calls
/// that block and return a record.
///
/// Lives on its host's thread, where it is called and destroyed; the request library's Manager and
/// all replies live on a cloud thread that runs from construction to destruction. A call waits in a
/// local event loop: the caller's events go on being delivered, and slots may call again, nested to
/// any depth. Calls in progress return EC_OperationCanceledError after cancel() and when the
/// application object under which this one was made quits or ends; so does every call on a thread
/// that has been told to quit, until its event loop runs anew. When a slot destroys this object
/// they return EC_IsAborted. Account state is unguarded: one thread at a time, and never the cloud
/// thread. Calls throw nothing of their own but std::bad_alloc; what a slot throws passes through.
/// Every method but cancel() can also be invoked by name through the meta-object.
class PASSPORT_EXPORT PassportNubelo : public QObject
{
    Q_OBJECT

public:
    /// Starts the cloud thread. Nothing is sent.
    explicit PassportNubelo(QObject *parent = nullptr);
    /// Returns when the cloud thread has ended; requests still open end as aborted first.
    ~PassportNubelo() override;

    /// Ends every call in progress, on whatever thread, as EC_OperationCanceledError: its `result`
    /// stays as it was and its request is dropped. Calls made later are not affected. May be called
    /// from any thread while this object lives.
    void cancel();

    // One request each. `result` receives the answer's "result", also that of a failed answer; it
    // stays as it was when there was no answer. `body`, `params`, `headers` and `source` travel to
    // the request library under their own names.

    /// Request `name` with the given method.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    requestNubelo(QVariant &result, QString name, Nubelo::Manager::HttpRequestType requestType,
                  Nubelo::Manager::HttpEncryptType encryptType, QVariantMap body = QVariantMap(),
                  QVariantMap params = QVariantMap(), QVariantMap headers = QVariantMap(),
                  QString source = QString());

    /// Request `name` with the method that the cloud configuration gives for it.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    requestNubelo(QVariant &result, QString name, QVariantMap body = QVariantMap(),
                  QVariantMap params = QVariantMap(), QVariantMap headers = QVariantMap(),
                  QString source = QString());

    /// Request `name` with `appendToUrl` behind its path. Mind the order of the maps: headers,
    /// params, body.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    requestNubelo(QVariant &result, QString name, QString appendToUrl,
                  Nubelo::Manager::HttpRequestType requestType,
                  Nubelo::Manager::HttpEncryptType encryptType, QVariantMap headers = QVariantMap(),
                  QVariantMap params = QVariantMap(), QVariantMap body = QVariantMap(),
                  QString source = QString());

    /// Request an address. `requestType` changes nothing: the request library's call for addresses
    /// has no place for it.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    requestNubelo(QVariant &result, QString url, Nubelo::Manager::HttpRequestType requestType,
                  QVariantMap body = QVariantMap(), QVariantMap params = QVariantMap(),
                  QVariantMap headers = QVariantMap());

    /// Waits for a reply, which lives on the cloud thread, and releases it. A null `reply` gives
    /// UnknownErr.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError replyConnect(Nubelo::Reply *reply,
                                                                    QString name, QVariant &result);

    /// The record for a code of the request library. Changes nothing in this object.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    setErrorCode(Nubelo::Error::ErrorCode errorCode);

    // The cloud configuration, handed to the request library as it is; in force when a setter
    // returns.

    /// From a file.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError setConfigPath(QString path);
    /// From a map.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError setConfigData(QVariantMap data);
    /// Chooses the environment: the same as a map with "cloudEnvironment".
    Q_INVOKABLE VelqorPassPort::PassportCommunityError setConfigData(QString environment);
    /// What the request library holds; typically empty before the first setter.
    Q_INVOKABLE QVariantMap configData();

    // The operations of the service. Parameters that a comment does not mention are there for the
    // callers' sake and not sent.

    // The signed-in account.

    /// Signs in with a password ("userLogin"), keeps token and profile and fills `userInfo` with
    /// the full profile. Succeeds also when only the profile query fails; `userInfo` then stays as
    /// it was. On failure nothing is stored.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    logIn(const QString &username, const QString &password, const QString &phoneArea,
          QVariantMap &userInfo, bool isRemember);

    /// Signs in with a verification code ("userCodeLogin"), keeps token and profile, fetches the
    /// full profile and sets `userInfo` to all of it. The record is the profile query's: when only
    /// that failed the user is signed in all the same. When the sign-in failed nothing changes,
    /// `userInfo` included.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    reqCodeLogIn(const QString &username, const QString &phoneArea, const QString &captcha,
                 const QString &validCode, QVariantMap &userInfo, QString source = QString());

    /// Marks the stored profile as signed out ("status" false) without a request; keeps the token.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError logOut();

    /// Fetches the profile ("getPassInfo") into the stored one and sets `map` to the whole of it;
    /// on failure `map` stays as it was. AuthErr without a request when nobody has signed in.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError reqGetUserInfo(QVariantMap &map,
                                                                      QString sourceStr);

    /// Merges an answer of the service into the stored profile.
    Q_INVOKABLE void setUserInfo(QVariantMap info);

    /// Keeps a session token until the next sign-in replaces it. reqGetUserInfo() needs the
    /// account's identifier too: after a sign-in elsewhere setUserInfo({{"userID", identifier}}).
    Q_INVOKABLE void setToken(QString token);
    /// The session token; empty before the first sign-in.
    Q_INVOKABLE QString token() const;

    // Captchas and codes. reqCaptcha() begins; what follows quotes its captcha's identifier, behind
    // a prefix for the purpose. Before any captcha the identifier is empty.

    /// "prefix-identifier", by which the service links a captcha or code to its purpose.
    Q_INVOKABLE QString linkUuid(QString prefix, QString identifier);

    /// A new picture captcha ("captcha"). Sizes, lifetime and number of characters are texts that
    /// the service interprets. `data` becomes {"data": the picture as text, "source": `source`}; on
    /// failure it stays as it was, but the captcha before has ended all the same.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    reqCaptcha(QVariant &data, QString width = QString(), QString height = QString(),
               QString expire = QString(), QString length = QString(), QString source = QString(),
               QString uSource = QString());

    /// Has a verification code sent to the user's phone or mailbox ("userInfoValid") for the
    /// purpose `source`; `data` receives the answer's "result", also that of a failed answer.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    reqValidCode(QVariant &data, QString captcha, QString username, QString phoneArea, QString lang,
                 QString source = QString(), QString uSource = QString());

    /// Asks whether an account exists ("userExistCheck"); the record's code is the whole answer.
    /// `source` is the prefix alone and no field of the request.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError isUserExisted(const QString &source,
                                                                     const QString &captcha,
                                                                     const QString &username,
                                                                     const QString &phoneArea);

    /// Sets a new password, sent as it is ("rbpwd"), with a code for the purpose "bpwd". Nobody is
    /// signed in or out by it.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    reqResetPassword(const QString &username, const QString &phoneArea, const QString &captcha,
                     const QString &validCode, const QString &password, QString source = QString());

    // Countries: maps as the service sends them, "languages" and "timezones" as QJsonArray (empty
    // where the service's text is no JSON array). The list and the area are cached for good.

    /// Fetches the countries ("fetchCountries"). On failure `countries` receives the cached list
    /// and stays as it was when there is none.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError reqCountries(QVariantList &countries);

    /// Fetches the identifier of the country that the caller's address belongs to ("ipCountry"). On
    /// failure nothing changes.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError getCurrentPhoneArea(QString &phoneArea);

    /// The name and the entry of the current country, out of the caches where they are filled; with
    /// the mode "online" both are fetched anew. Succeeds also when no country matches: `country`
    /// then is the identifier if that was just fetched, and the rest stays as it was.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    reqCurrentCountry(QString &country, QVariantMap &cCountryInfoMap, QString mode = QString());

    // The service itself.

    /// Fetches the text of the privacy policy ("getOEMPrivacyColorInfoByType") for a product line,
    /// language and kind of text; on failure `privacy` stays as it was.
    Q_INVOKABLE VelqorPassPort::PassportCommunityError
    reqGetPrivacy(QString &privacy, QString language = QString(), QString oemurl = QString(),
                  QString source = QString(), QString target = QString());

    /// Asks the service for a sign of life ("status").
    Q_INVOKABLE VelqorPassPort::PassportCommunityError getNetByStatus();

private:
    // Requests of the source "cloud", unencrypted.
    PassportCommunityError post(QVariant &result, const QString &name, const QVariantMap &body,
                                const QVariantMap &params = QVariantMap(),
                                const QVariantMap &headers = QVariantMap());
    PassportCommunityError get(QVariant &result, const QString &name);

    /// Makes the answer to a sign-in the stored profile and its token the session's.
    void keepAccount(QVariantMap account);

    using Call = std::function<Nubelo::Reply *(Nubelo::Manager &)>;
    PassportCommunityError exchange(const QString &name, QVariant &result, const Call &call);

    Nubelo::Manager *m_manager = nullptr;
    QString m_token;
    QVariantMap m_userInfo;
    QString m_captchaId; // a UUID without braces
    QVariantList m_countries;
    QString m_currentPhoneArea; // the identifier of a country
    QThread m_cloudThread;
};

} // namespace VelqorPassPort
