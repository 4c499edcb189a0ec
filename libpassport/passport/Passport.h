// SPDX-License-Identifier: MIT
#pragma once

#include "../common/Export.h"
#include "PassportCommunityError.h"

#include <QtCore/QJsonObject>
#include <QtCore/QMutex>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QUrl>
#include <QtCore/QVariant>
#include <QtCore/QVariantList>
#include <QtCore/QVariantMap>

#include <string>

namespace VelqorPassPort {

class InitialWorker;
class PassportNubelo;

/// A host's one way to the account service.
///
/// Construct one for each thread that calls it (normally that of the windows alone), on that thread
/// and after the application object. Call initial() with the passport directory, then one of the
/// configuration setters, then whatever is needed, and exitModule() before the end. Operations that
/// reach the cloud block until the outcome is there, while the caller's events go on being
/// delivered; slots may call again. Outcomes are returned; calls throw nothing of their own but
/// std::bad_alloc. The destructor returns when the cloud thread has ended.
class PASSPORT_EXPORT Passport : public QObject
{
    Q_OBJECT

public:
    /// Starts the cloud thread and writes version and build to the log. Reads no file.
    explicit Passport(QObject *parent = nullptr);
    ~Passport() override;

    /// Keeps `dir`, which is given without a trailing separator, and brings up its environment,
    /// starting the hub when its configuration asks for one; a hub goes on running after
    /// exitModule() and after this object. Blocks without delivering events for a run of "ps", and
    /// for one to two seconds more where a hub is started. Always returns 0: a failed start shows
    /// in the log. Only the first call starts anything, also when it failed; later ones keep `dir`
    /// and no more.
    int initial(QString dir);

    /// Ends a web tool that is still open, where it can be found by its name (docs/web-flows.md,
    /// "What a host must know").
    void exitModule();

    /// Ends every call that waits for the cloud, on whatever thread, as EC_OperationCanceledError;
    /// what it was to fill stays as it was. Calls made later are not affected. A user whose profile
    /// is being fetched after a sign-in is signed in all the same. May be called from any thread
    /// while this object lives; the quit and the end of the application do the same.
    void cancel();

    /// Changes the passport directory, and nothing else.
    void setPassportDir(QString dir);

    /// Keeps a session token from elsewhere until the next sign-in replaces it. Alone it is no
    /// sign-in: reqGetUserInfo() goes on answering AuthErr.
    void setToken(QString token);
    /// The session token; empty before the first sign-in.
    QString token() const;

    // The cloud configuration; in force when a setter returns. Setters wait as calls to the cloud
    // do: the caller's events are delivered meanwhile, and cancel() ends the wait.

    /// Replaces all of it by that of a JSON file.
    PassportCommunityError setConfigPath(QString path);
    /// Merges a map into it, objects member by member.
    PassportCommunityError setConfigData(QVariantMap data);
    /// Chooses the environment. An unknown name is no error here: requests then end as
    /// EC_ConfigDataError.
    PassportCommunityError setConfigData(QString environment);
    /// Replaces `data` by the configuration so far; always a success.
    PassportCommunityError configData(QVariantMap &data);

    // The signed-in account.

    /// Signs in with a password and fills `userInfo` with the profile; success does not depend on
    /// the profile. With `isRemember` the name and the password, exactly as given, are written to
    /// config/account.json in the passport directory, a file that its owner alone can read; where
    /// the permissions cannot be narrowed to that, the name alone. Whether it worked is not
    /// reported. On failure the file stays as it was.
    PassportCommunityError logIn(const QString &username, const QString &password,
                                 const QString &phoneArea, QVariantMap &userInfo, bool isRemember);

    /// Signs in with a verification code and fills `userInfo` with the profile. The record is the
    /// profile query's: when only that failed the user is signed in all the same. With `isRemember`
    /// config/account.json is rebuilt in the same way, with the name alone. `source` is not used.
    PassportCommunityError reqCodeLogIn(const QString &username, const QString &phoneArea,
                                        const QString &captcha, const QString &validCode,
                                        QVariantMap &userInfo, QString source, bool isRemember);

    /// The remembered account, "name" and "password"; empty when there is none.
    QJsonObject getAccountInfo();

    /// Marks the profile as signed out. Sends nothing; the token and the remembered account stay.
    PassportCommunityError logOut();

    /// Fetches the profile into `map`, which stays as it was on failure. AuthErr, with nothing
    /// sent, before a sign-in by logIn() or reqCodeLogIn(), also after setToken().
    PassportCommunityError reqGetUserInfo(QVariantMap &map, QString sourceStr);

    /// The bytes behind base64 text; nothing is deciphered.
    std::string deBase64(const std::string &text);

    /// Reserved for software updates; succeeds and does nothing.
    PassportCommunityError reqSoftUp();

    // Captchas, verification codes and what they open. reqCaptcha() comes first: what follows
    // belongs to the last captcha.

    /// A new picture captcha; `data` becomes {"data": the picture as text, "source": `source`} and
    /// stays as it was on failure. Sizes, lifetime and number of characters are texts that the
    /// service interprets. `uSource` is not used.
    PassportCommunityError reqCaptcha(QVariant &data, QString width, QString height, QString expire,
                                      QString length, QString source, QString uSource);

    /// Has a verification code sent to the user's phone or mailbox, for the purpose `source`;
    /// `data` receives what the service answers, also on failure. `uSource` is not used.
    PassportCommunityError reqValidCode(QVariant &data, QString captcha, QString username,
                                        QString phoneArea, QString lang, QString source,
                                        QString uSource);

    /// Asks whether an account exists: success when it does, errorMessage "notExistErr" when it
    /// does not. Any other error says nothing about the account.
    PassportCommunityError isUserExisted(const QString &source, const QString &captcha,
                                         const QString &username, const QString &phoneArea);

    /// Sets a new password. Nobody is signed in or out by it; `source` is not used.
    PassportCommunityError reqResetPassword(QString username, QString phoneArea, QString captcha,
                                            QString validCode, QString password, QString source);

    // Countries: maps as the service sends them, "languages" and "timezones" as QJsonArray.

    /// Fetches the countries. On failure `countries` receives the list fetched before and stays as
    /// it was when there is none.
    PassportCommunityError reqCountries(QVariantList &countries);

    /// The name and the entry of the country that the caller's address belongs to; asks the service
    /// only for what it has not told yet. Succeeds also when no country matches: `country` then is
    /// the country's identifier if that was just fetched, and the rest stays as it was.
    PassportCommunityError reqCurrentCountry(QString &country, QVariantMap &cCountryInfoMap);

    // The service itself.

    /// Fetches the text of the privacy policy into `privacy`, which stays as it was on failure, and
    /// keeps it under privacypolicy/ in the passport directory: as the Chinese copy when `language`
    /// contains "zh-cn", else as the English one. With `openBrowser` then shows that copy as
    /// openURL() does, also one of an earlier call. `dir`, `reserved` and `source` are not used.
    void reqGetPrivacy(QString &privacy, QString language, QString dir, bool openBrowser,
                       QString oemurl, QString reserved, QString source);

    /// Whether the address "hasnet" of "nubelo" in config/PassPortCfg.cfg answers.
    bool hasNet();

    /// Whether the account service answers.
    bool hasVelqorNet();

    // Web pages, shown by the web tool in the passport directory (docs/web-flows.md). Each blocks
    // until the tool ends, however long that takes, without delivering the caller's events: call
    // them from a thread that may be blocked; it needs no event loop. Signals are emitted on that
    // thread, in the middle of the call. When there is no tool, a call ends at once.
    //
    // `path` is appended to the web service's address as config/PassPortCfg.cfg has it, with
    // nothing put between them; `text` is handed to the tool as it is.

    /// Shows one page; emits webpageClosed() at the end.
    void openURL(QUrl url, QString text);

    /// Sign-in: tokenReceived() and userIdReceived() as the page brings them, each perhaps several
    /// times, then webpageClosed(). Nobody is signed in by it (docs/web-flows.md, "What a host must
    /// know").
    /// `flag` has the log say when both have come.
    void openLoginURL(bool flag, QString path, QString text);

    /// Sign-up: userLoadSuccess() for each complete record, then webpageClosed(). With `closes` the
    /// tool is ended by name 2 s after a record, complete or not; when the page asks for it,
    /// always.
    void openRegisterURL(bool closes, QString path, QString text);

    /// Forgotten password: as openRegisterURL(), but a short record comes too, with empty texts.
    void openForgitURL(bool closes, QString path, QString text);

    /// Further information on the account of `token`: supplySuccess() when the page has saved it,
    /// and no webpageClosed(). Sets the variable QTWEBENGINE_REMOTE_DEBUGGING of this process to
    /// 1112 for good. With `closes` runs "taskkill", where there is one, against the tool.
    void openAddInfoURL(QString token, bool closes, QString path, QString text);

    /// Copies the files below a directory, except hidden ones, for a web tool to be put in place:
    /// what exists in the destination stays. The destination is created, its parents are not; it
    /// must not lie in the source. What cannot be copied is left out without a word.
    void copyOpenWebFile(QString source, QString destination);

    // Protected storage. Protected text is base64 (RFC 4648) of AES-128-ECB ciphertext (FIPS 197)
    // under the library's key. Unprotected data ends in the 0 to 15 zero bytes that completed its
    // last block; cut them off where they matter. Calls return false, with a critical line in the
    // log, when the result is empty: a QString then stays as it was, a std::string becomes empty.
    // Those that write a file return false also when it cannot be opened. Callable from several
    // threads: all but the last two take turns.

    /// Protects a byte string. `result` is assigned in any case; false for an empty text.
    bool serializeString(std::string text, std::string &result);
    /// Unprotects into bytes. Text that was never protected gives bytes without meaning, and true.
    bool deserializeString(std::string protectedText, std::string &result);
    /// Protects the UTF-8 of a text.
    bool serializeString(QString text, QString &result);
    /// Protects the UTF-8 of an object's indented JSON; an empty object too.
    bool serializeObj(QJsonObject object, QString &result);
    /// Protects the UTF-8 of a text into a file. True means that the file could be opened.
    bool serializeFile(QString text, QString filePath);
    /// Protects the local 8-bit form of an object's indented JSON into a file.
    bool serializeData(QJsonObject object, QString filePath);
    /// Unprotects into a text, padding included as U+0000.
    bool deserializeData(QString protectedText, QString &result);
    /// Unprotects a file into a text, padding included, and prints it to standard output. False for
    /// a missing and for an empty file.
    bool deserializeFile(QString filePath, QString &result);
    /// Never returns: it waits for a lock that it holds itself. Call deserializeFile() and
    /// setFileContent() instead.
    bool deserializeFileToFile(QString protectedFilePath, QString plainFilePath);
    /// Replaces a file by the local 8-bit form of a text. True means that it could be opened.
    bool setFileContent(QString filePath, QString content);
    /// The object in a JSON information file; empty when there is none.
    QJsonObject getFileContentObj(QString filePath);

Q_SIGNALS:
    /// For hosts to connect to; nothing in the library emits it.
    void hubConnect();
    /// A web flow brought an account's details.
    void userLoadSuccess(QString userName, QString passWord, QString phoneArea);
    /// A web sign-in brought the session token.
    void tokenReceived(QString token);
    /// A web sign-in brought the user's identifier.
    void userIdReceived(QString userId);
    /// The page of a web flow was closed.
    void webpageClosed();
    /// The user completed the account's information.
    void supplySuccess();

private:
    InitialWorker *m_initialWorker = nullptr;
    bool m_initialized = false; // no operation sets it: initial() asks the worker each time
    QString m_passportDir;
    QMutex m_mutex;
    PassportNubelo *m_cloud = nullptr;
    QString m_webHelperPath;
};

} // namespace VelqorPassPort
