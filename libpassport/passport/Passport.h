#pragma once

#include "common/Export.h"
#include "passport/PassportCommunityError.h"

#include <QtCore/QJsonObject>
#include <QtCore/QMutex>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QVariantMap>

#include <string>

namespace VelqorPassPort {

class InitialWorker;
class PassportNubelo;

/// A host's one way to the account service.
///
/// Construct one, on the thread that will call it (normally that of the windows), after the
/// application object. Call initial() with the passport directory, then one of the configuration
/// setters, then whatever is needed, and exitModule() before the end. Operations that reach the
/// cloud block until the outcome is there, while the caller's events go on being delivered; slots
/// may call again. Outcomes are returned, never thrown. The destructor returns when the cloud
/// thread has ended.
class PASSPORT_EXPORT Passport : public QObject
{
    Q_OBJECT

public:
    explicit Passport(QObject *parent = nullptr);
    ~Passport() override;

    /// Keeps `dir` (without a trailing separator) and brings up its environment, starting the hub
    /// when its configuration asks for one. Always returns 0: a failed start shows in the log.
    /// Every call does so again; a host that must not keeps its own guard.
    int initial(QString dir);

    /// Ends a web tool that is still open.
    void exitModule();

    /// Changes the passport directory, and nothing else.
    void setPassportDir(QString dir);

    /// The session token; empty before the first sign-in.
    void setToken(QString token);
    QString token() const;

    // The cloud configuration; in force when a setter returns.

    /// From a JSON file.
    PassportCommunityError setConfigPath(QString path);
    /// Merges a map.
    PassportCommunityError setConfigData(QVariantMap data);
    /// Chooses the environment.
    PassportCommunityError setConfigData(QString environment);
    /// Replaces `data` by the configuration so far; always a success.
    PassportCommunityError configData(QVariantMap &data);

    // The signed-in account.

    /// Signs in with a password and fills `userInfo` with the profile; success does not depend on
    /// the profile. With `isRemember` the name and the password, exactly as given, are written to
    /// config/account.json in the passport directory, a file that its owner alone can read; whether
    /// that worked is not reported. On failure the file stays as it was.
    PassportCommunityError logIn(const QString &username, const QString &password,
                                 const QString &phoneArea, QVariantMap &userInfo, bool isRemember);

    /// The remembered account, "name" and "password"; empty when there is none.
    QJsonObject getAccountInfo();

    /// Marks the profile as signed out. Sends nothing; the token and the remembered account stay.
    PassportCommunityError logOut();

    /// Fetches the profile into `map`, which stays as it was on failure. AuthErr before any
    /// sign-in.
    PassportCommunityError reqGetUserInfo(QVariantMap &map, QString sourceStr);

    /// The bytes behind base64 text; nothing is deciphered.
    std::string deBase64(const std::string &text);

    /// Reserved for software updates; succeeds and does nothing.
    PassportCommunityError reqSoftUp();

    // Protected storage. Protected text is base64 (RFC 4648) of AES-128-ECB ciphertext (FIPS 197)
    // under the library's key. Unprotected data ends in the 0 to 15 zero bytes that completed its
    // last block; cut them off where they matter. All calls return whether there is a result and
    // log a critical line when it is empty; text results stay as they were then. Callable from
    // several threads: all but the last two take turns.

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
    void rebuildAccountFile(const QString &path);

    InitialWorker *m_initialWorker = nullptr;
    bool m_initialized = false; // no operation sets it, so that initial() always starts again
    QString m_passportDir;
    QMutex m_mutex;
    PassportNubelo *m_cloud = nullptr;
    QString m_webHelperPath;
};

} // namespace VelqorPassPort
