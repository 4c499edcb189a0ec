#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <memory>

class QProcess;
class QTcpSocket;

/// A passport-emulator in a child process on a free port, for end-to-end tests.
///
/// Used from one thread, which needs no event loop; that thread must outlive the object. Only the
/// calls over HTTP may come from other threads, while the process is neither started nor ended.
/// Everything waits with a deadline. The destructor ends the process, and so does the end of the
/// test program.
class EmulatorProcess
{
public:
    struct HttpReply
    {
        int code = 0; ///< 0: no whole status line came
        QByteArray head;
        QByteArray body;
        QJsonObject json() const;
    };

    /// Options are added to those for the port and the ready file.
    explicit EmulatorProcess(const QStringList &options = {});
    ~EmulatorProcess();
    EmulatorProcess(const EmulatorProcess &) = delete;
    EmulatorProcess &operator=(const EmulatorProcess &) = delete;

    bool start(); ///< false with a warning if it does not serve in time
    bool stop();  ///< SIGTERM; false with a warning unless it ends with exit code 0
    void kill();  ///< SIGKILL

    QString baseUrl() const { return m_baseUrl; } ///< "http://127.0.0.1:port/v1"
    quint16 port() const;
    QString path(const QString &fileName) const { return m_directory.filePath(fileName); }
    QByteArray output() const; ///< of standard output since the last start

    /// One call of the developer's interface, with a path like "requests": its result, or undefined
    /// with a warning when it failed.
    QJsonValue devGet(const QString &path) { return dev("GET", path); }
    QJsonValue devPost(const QString &path, const QJsonObject &body = {})
    {
        return dev("POST", path, body);
    }
    QJsonValue devDelete(const QString &path) { return dev("DELETE", path); }
    QJsonArray requests() { return devGet("requests").toArray(); }
    bool addFault(const QJsonObject &fault) { return !devPost("faults", fault).isUndefined(); }
    bool setSettings(const QJsonObject &all) { return !devPost("settings", all).isUndefined(); }
    QString captchaAnswer(const QString &captchaId)
    {
        return devGet("captcha/" + captchaId).toObject().value("answer").toString();
    }
    /// Codes sent after the one with this number, at once or as soon as there is one.
    QJsonArray inbox(qint64 after = 0, int waitMs = 0)
    {
        return devGet(QString("inbox?after=%1&wait=%2").arg(after).arg(waitMs)).toArray();
    }
    QString latestCode() { return inbox().last().toObject().value("code").toString(); }

    /// One request on a connection of its own. Headers are lines without their end.
    HttpReply http(const QByteArray &method, const QByteArray &target, const QByteArray &body = {},
                   const QList<QByteArray> &headers = {});
    std::unique_ptr<QTcpSocket> connectSocket();

    static QString program(); ///< the emulator's executable

private:
    QJsonValue dev(const QByteArray &method, const QString &path, const QJsonObject &body = {});

    QTemporaryDir m_directory;
    QStringList m_options;
    std::unique_ptr<QProcess> m_process;
    QString m_baseUrl;
};
