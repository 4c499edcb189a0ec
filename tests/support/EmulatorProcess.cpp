#include "support/EmulatorProcess.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QDebug>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QUrl>
#include <QtNetwork/QTcpSocket>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/prctl.h>
#endif

namespace {

constexpr int deadlineMs = 20000;

// Dies with its parent where the system offers that, so that an aborted test leaves nothing behind.
class ChildProcess : public QProcess
{
protected:
    void setupChildProcess() override
    {
#ifdef Q_OS_LINUX
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    }
};

// Read by the thread sanitizer's runtime, where the emulator is built with it.
QProcessEnvironment environment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TSAN_OPTIONS"),
                       QStringLiteral("suppressions=" EMULATOR_TSAN_SUPPRESSIONS));
    return environment;
}

} // namespace

QJsonObject EmulatorProcess::HttpReply::json() const
{
    return QJsonDocument::fromJson(body).object();
}

EmulatorProcess::EmulatorProcess(const QStringList &options) : m_options(options) {}

EmulatorProcess::~EmulatorProcess()
{
    if (m_process)
        stop();
}

bool EmulatorProcess::start()
{
    const QString readyFile = path(QStringLiteral("ready"));
    QFile::remove(readyFile);
    m_process = std::make_unique<ChildProcess>();
    m_process->setProcessEnvironment(environment());
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // Not a pipe, which would hold up the emulator when nobody reads it.
    m_process->setStandardOutputFile(path(QStringLiteral("output")));
    m_process->start(program(), QStringList{QStringLiteral("--port"), QStringLiteral("0"),
                                            QStringLiteral("--ready-file"), readyFile} +
                                    m_options);
    const QDeadlineTimer deadline(deadlineMs);
    while (!QFile::exists(readyFile)) {
        const bool failed = m_process->waitForFinished(5) || !m_process->isOpen();
        if (failed || deadline.hasExpired()) {
            qWarning() << "the emulator does not serve:" << m_process->errorString();
            kill();
            return false;
        }
    }
    QFile file(readyFile);
    if (file.open(QIODevice::ReadOnly))
        m_baseUrl = QString::fromUtf8(file.readAll()).trimmed();
    return !m_baseUrl.isEmpty();
}

bool EmulatorProcess::stop()
{
    if (!m_process)
        return false;
    m_process->terminate();
    const bool ended = m_process->waitForFinished(deadlineMs);
    const bool well =
        ended && m_process->exitStatus() == QProcess::NormalExit && m_process->exitCode() == 0;
    if (!well)
        qWarning() << "the emulator does not end well:" << m_process->exitCode();
    kill();
    return well;
}

void EmulatorProcess::kill()
{
    if (m_process && m_process->state() != QProcess::NotRunning) {
        m_process->kill();
        m_process->waitForFinished(deadlineMs);
    }
    m_process.reset();
}

bool EmulatorProcess::restart()
{
    kill();
    return start();
}

QString EmulatorProcess::baseUrl() const
{
    return m_baseUrl;
}

quint16 EmulatorProcess::port() const
{
    return static_cast<quint16>(QUrl(m_baseUrl).port());
}

QString EmulatorProcess::path(const QString &fileName) const
{
    return m_directory.filePath(fileName);
}

QByteArray EmulatorProcess::output() const
{
    QFile file(path(QStringLiteral("output")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString EmulatorProcess::program()
{
    return QStringLiteral(PASSPORT_EMULATOR);
}

QJsonValue EmulatorProcess::devGet(const QString &path)
{
    return dev("GET", path, {});
}

QJsonValue EmulatorProcess::devPost(const QString &path, const QJsonObject &body)
{
    return dev("POST", path, QJsonDocument(body).toJson());
}

QJsonValue EmulatorProcess::devDelete(const QString &path)
{
    return dev("DELETE", path, {});
}

bool EmulatorProcess::addFault(const QJsonObject &fault)
{
    return !devPost(QStringLiteral("faults"), fault).isUndefined();
}

bool EmulatorProcess::setSettings(const QJsonObject &settings)
{
    return !devPost(QStringLiteral("settings"), settings).isUndefined();
}

QString EmulatorProcess::captchaAnswer(const QString &captchaId)
{
    const QJsonValue captcha = devGet(QStringLiteral("captcha/") + captchaId);
    return captcha.toObject().value(QStringLiteral("answer")).toString();
}

QJsonArray EmulatorProcess::inbox(qint64 after, int waitMs)
{
    return devGet(QStringLiteral("inbox?after=%1&wait=%2").arg(after).arg(waitMs)).toArray();
}

QString EmulatorProcess::latestCode()
{
    return inbox().last().toObject().value(QStringLiteral("code")).toString();
}

QJsonValue EmulatorProcess::dev(const QByteArray &method, const QString &path,
                                const QByteArray &body)
{
    const HttpReply reply = http(method, "/_dev/" + path.toUtf8(), body);
    if (reply.code == 200)
        return reply.json().value(QStringLiteral("result"));
    qWarning() << "emulator call failed:" << method << path << reply.code << reply.body;
    return QJsonValue(QJsonValue::Undefined);
}

EmulatorProcess::HttpReply EmulatorProcess::http(const QByteArray &method, const QByteArray &target,
                                                 const QByteArray &body,
                                                 const QList<QByteArray> &headers)
{
    QByteArray request = method + ' ' + target + " HTTP/1.1\r\nConnection: close\r\n";
    for (const QByteArray &header : headers)
        request += header + "\r\n";
    if (!body.isEmpty())
        request += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    const QByteArray answer = exchange(request + "\r\n" + body);
    const int end = answer.indexOf("\r\n\r\n");
    HttpReply reply;
    reply.head = answer.left(end);
    reply.body = end < 0 ? QByteArray() : answer.mid(end + 4);
    reply.code = end < 0 ? 0 : reply.head.mid(int(qstrlen("HTTP/1.1 ")), 3).toInt();
    return reply;
}

QByteArray EmulatorProcess::exchange(const QByteArray &bytes)
{
    const std::unique_ptr<QTcpSocket> socket = connectSocket();
    socket->write(bytes);
    const QDeadlineTimer deadline(deadlineMs);
    QByteArray answer;
    while (!deadline.hasExpired() && socket->waitForReadyRead(int(deadline.remainingTime())))
        answer += socket->readAll();
    return answer + socket->readAll();
}

std::unique_ptr<QTcpSocket> EmulatorProcess::connectSocket()
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QUrl(m_baseUrl).host(), port());
    if (!socket->waitForConnected(deadlineMs))
        qWarning() << "no connection to the emulator:" << socket->errorString();
    return socket;
}
