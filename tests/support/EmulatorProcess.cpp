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

QString EmulatorProcess::program()
{
    return PASSPORT_EMULATOR;
}

bool EmulatorProcess::start()
{
    const QString readyFile = path("ready");
    QFile::remove(readyFile);
    m_process = std::make_unique<ChildProcess>();
    // Read by the thread sanitizer's runtime, where the emulator is built with it.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TSAN_OPTIONS", "suppressions=" EMULATOR_TSAN_SUPPRESSIONS);
    m_process->setProcessEnvironment(environment);
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // Not a pipe, which would hold up the emulator when nobody reads it.
    m_process->setStandardOutputFile(path("output"));
    m_process->start(program(), QStringList{"--port", "0", "--ready-file", readyFile} + m_options);
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

quint16 EmulatorProcess::port() const
{
    return static_cast<quint16>(QUrl(m_baseUrl).port());
}

QByteArray EmulatorProcess::output() const
{
    QFile file(path("output"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonValue EmulatorProcess::dev(const QByteArray &method, const QString &path,
                                const QJsonObject &body)
{
    const HttpReply reply = http(method, "/_dev/" + path.toUtf8(),
                                 method == "POST" ? QJsonDocument(body).toJson() : QByteArray());
    if (reply.code == 200)
        return reply.json().value("result");
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
    const std::unique_ptr<QTcpSocket> socket = connectSocket();
    socket->write(request + "\r\n" + body);
    const QDeadlineTimer deadline(deadlineMs);
    QByteArray answer;
    while (!deadline.hasExpired() && socket->waitForReadyRead(int(deadline.remainingTime())))
        answer += socket->readAll();
    answer += socket->readAll();
    const int end = answer.indexOf("\r\n\r\n");
    if (end < 0)
        return {};
    return {answer.mid(int(qstrlen("HTTP/1.1 ")), 3).toInt(), answer.left(end),
            answer.mid(end + 4)};
}

std::unique_ptr<QTcpSocket> EmulatorProcess::connectSocket()
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->connectToHost(QUrl(m_baseUrl).host(), port());
    if (!socket->waitForConnected(deadlineMs))
        qWarning() << "no connection to the emulator:" << socket->errorString();
    return socket;
}
