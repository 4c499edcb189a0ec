// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtCore/QVariantMap>

#include <memory>

class QProcess;

namespace VelqorPassPort::Testing {

/// A passport-emulator of a test's own: an account cloud in a child process on a free port.
///
/// Used from one thread, which needs no event loop; where the system offers it (Linux) the process
/// ends with that thread, so the thread must outlive the object. Only the calls over HTTP may come
/// from other threads, while the process is neither started nor ended. Every call blocks, for 20
/// seconds at most. What fails is told by the result and by a warning. The destructor ends the
/// process; accounts, codes and all else that it kept in memory go with it.
class Emulator
{
public:
    /// What came back over HTTP.
    struct Answer
    {
        int httpStatus = 0;       ///< 0: no whole header came
        QByteArray head;          ///< status line and header lines
        QByteArray body;          ///< as it came
        QJsonObject json() const; ///< the body; empty when it is not a JSON object
    };

    /// `options` are further ones of the program's, such as {"--data", file}; the port and the
    /// ready file are chosen here. Nothing is started yet.
    explicit Emulator(const QStringList &options = {}, const QString &program = defaultProgram());
    ~Emulator();
    Q_DISABLE_COPY_MOVE(Emulator)

    /// The emulator of the package or build that this library is from; where that is not known,
    /// because the target Passport::testing was not linked, the first one in PATH.
    static QString defaultProgram();

    /// The accounts from the next start on, in place of the emulator's own; the option --seed is
    /// then not for use. An account is an object with "username" and "password" at least.
    void setAccounts(const QJsonArray &accounts) { m_accounts = accounts; }

    /// True when it serves. One that runs already is killed first.
    bool start();
    /// Asks it to end (SIGTERM); true if it ended with exit code 0.
    bool stop();
    /// As in a crash (SIGKILL).
    void kill();

    /// "http://127.0.0.1:port/v1", with another port after each start; empty before the first.
    QString baseUrl() const { return m_baseUrl; }
    quint16 port() const; ///< 0 before the first start
    /// For setConfigData(): this emulator as the cloud, in an environment "emulator".
    QVariantMap cloudConfiguration() const;
    /// A path in a directory that is removed with this object.
    QString path(const QString &fileName) const { return m_directory.filePath(fileName); }
    QByteArray output() const; ///< its standard output since the last start

    /// Back to the first accounts, without sessions, codes, faults, settings and recorded requests.
    bool reset() { return !devPost(QStringLiteral("reset")).isUndefined(); }

    /// What a client has asked for, oldest first: "name", "method", "path", "query", "headers",
    /// "body", and what it was answered: "httpStatus", "word", "answer" and more. The emulator
    /// keeps 10,000 requests, and less of very large ones.
    QJsonArray requests();

    /// {"request": name or "*", "kind": ..., and what the kind takes}; with "times" it is spent
    /// after as many requests. The emulator's manual lists the kinds.
    bool addFault(const QJsonObject &fault)
    {
        return !devPost(QStringLiteral("faults"), fault).isUndefined();
    }
    /// Ends all faults.
    bool clearFaults() { return !devDelete(QStringLiteral("faults")).isUndefined(); }

    /// At first {"codeIntervalSeconds": 60, "codeLifetimeSeconds": 300, ...}; those not named stay
    /// as they are. The emulator's manual lists all.
    bool setSettings(const QJsonObject &settings)
    {
        return !devPost(QStringLiteral("settings"), settings).isUndefined();
    }

    /// Verification codes sent after the one with this "id", oldest first: "id", "username",
    /// "phoneArea", "purpose", "code", "lang", "time", "expires", "state". Where there is none,
    /// waits for one.
    QJsonArray inbox(qint64 after = 0, int waitMs = 0);
    QString latestCode(); ///< empty when none was sent

    /// What is to be typed for that captcha; empty when there is none by that identifier.
    QString captchaAnswer(const QString &captchaId);
    /// Of the captcha that a client fetched last; empty when there is none.
    QString latestCaptchaAnswer();

    // One call below /_dev/, of which the above are the usual ones: its result, or undefined when
    // it failed.

    /// Reads.
    QJsonValue devGet(const QString &path) { return dev("GET", path); }
    /// Adds, or starts something.
    QJsonValue devPost(const QString &path, const QJsonObject &body = {})
    {
        return dev("POST", path, body);
    }
    /// Changes the members named in `body`.
    QJsonValue devPatch(const QString &path, const QJsonObject &body)
    {
        return dev("PATCH", path, body);
    }
    /// Removes.
    QJsonValue devDelete(const QString &path) { return dev("DELETE", path); }

    /// Any request, on a connection of its own. Headers are lines without their end; "Host" is
    /// this machine where they name none.
    Answer http(const QByteArray &method, const QByteArray &target, const QByteArray &body = {},
                const QList<QByteArray> &headers = {});

private:
    bool writeSeed(const QString &path) const;
    bool awaitReady(const QString &readyFile);
    QJsonValue dev(const QByteArray &method, const QString &path, const QJsonObject &body = {});

    QTemporaryDir m_directory;
    const QStringList m_options;
    const QString m_program;
    QJsonArray m_accounts;
    std::unique_ptr<QProcess> m_process;
    QString m_baseUrl;
};

// Here and not in the library, since only the build of the test knows where the package is.
inline QString Emulator::defaultProgram()
{
#ifdef PASSPORT_EMULATOR
    return QStringLiteral(PASSPORT_EMULATOR);
#else
    return QStringLiteral("passport-emulator");
#endif
}

} // namespace VelqorPassPort::Testing
