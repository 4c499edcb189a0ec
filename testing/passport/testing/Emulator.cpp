// SPDX-License-Identifier: MIT
#include "passport/testing/Emulator.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QDebug>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QUrl>
#include <QtNetwork/QTcpSocket>

#ifdef Q_OS_LINUX
#include <csignal>
#include <sys/prctl.h>
#endif

namespace VelqorPassPort::Testing {

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

QJsonObject Emulator::Answer::json() const
{
    return QJsonDocument::fromJson(body).object();
}

Emulator::Emulator(const QStringList &options, const QString &program)
    : m_options(options)
    , m_program(program)
{
}

Emulator::~Emulator()
{
    if (m_process)
        stop();
}

bool Emulator::start()
{
    kill();
    m_baseUrl.clear();
    const QString readyFile = path(QStringLiteral("ready"));
    const QString seedFile = path(QStringLiteral("seed.json"));
    QFile::remove(readyFile);
    QStringList options{QStringLiteral("--port"), QStringLiteral("0"),
                        QStringLiteral("--ready-file"), readyFile};
    if (!m_accounts.isEmpty()) {
        if (!writeSeed(seedFile))
            return false;
        options << QStringLiteral("--seed") << seedFile;
    }
    m_process = std::make_unique<ChildProcess>();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // Not a pipe, which would hold up the emulator when nobody reads it.
    m_process->setStandardOutputFile(path(QStringLiteral("output")));
    m_process->start(m_program, options + m_options);
    if (!awaitReady(readyFile)) {
        kill();
        return false;
    }
    QFile file(readyFile);
    if (file.open(QIODevice::ReadOnly))
        m_baseUrl = QString::fromUtf8(file.readAll()).trimmed();
    return !m_baseUrl.isEmpty();
}

bool Emulator::awaitReady(const QString &readyFile)
{
    const QDeadlineTimer deadline(deadlineMs);
    while (!QFile::exists(readyFile)) {
        m_process->waitForFinished(5);
        const bool ended = m_process->state() == QProcess::NotRunning;
        if (!ended && !deadline.hasExpired())
            continue;
        const bool ran = m_process->error() != QProcess::FailedToStart;
        qWarning() << "the emulator" << m_program << "does not serve:"
                   << (ended && ran ? QStringLiteral("exit code %1").arg(m_process->exitCode())
                                    : m_process->errorString());
        return false;
    }
    return true;
}

bool Emulator::writeSeed(const QString &path) const
{
    const QJsonObject seed{{QStringLiteral("accounts"), m_accounts}};
    QFile file(path);
    const QByteArray text = QJsonDocument(seed).toJson();
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush())
        return true;
    qWarning() << "the accounts cannot be written:" << file.errorString();
    return false;
}

bool Emulator::stop()
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

void Emulator::kill()
{
    if (m_process && m_process->state() != QProcess::NotRunning) {
        m_process->kill();
        m_process->waitForFinished(deadlineMs);
    }
    m_process.reset();
}

quint16 Emulator::port() const
{
    return static_cast<quint16>(QUrl(m_baseUrl).port(0));
}

QVariantMap Emulator::cloudConfiguration() const
{
    const QString name = QStringLiteral("emulator");
    const QVariantMap addresses{{QStringLiteral("cloud"), m_baseUrl}};
    return {{QStringLiteral("cloudEnvironment"), name},
            {QStringLiteral("environments"), QVariantMap{{name, addresses}}}};
}

QByteArray Emulator::output() const
{
    QFile file(path(QStringLiteral("output")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Up to the request that is the last one now: others may go on asking all the time.
QJsonArray Emulator::requests()
{
    const auto idOf = [](const QJsonValue &request) {
        return qint64(request[QLatin1String("id")].toDouble());
    };
    const qint64 last = idOf(devGet(QStringLiteral("requests?limit=1"))[0]);
    QJsonArray all;
    for (qint64 after = 0; after < last;) {
        const QJsonArray page =
            devGet(QStringLiteral("requests?after=%1&before=%2").arg(after).arg(last + 1))
                .toArray();
        for (const auto &request : page)
            all.append(request);
        after = page.isEmpty() ? last : idOf(page.last());
    }
    return all;
}

QJsonArray Emulator::inbox(qint64 after, int waitMs)
{
    return devGet(QStringLiteral("inbox?after=%1&wait=%2").arg(after).arg(waitMs)).toArray();
}

QString Emulator::latestCode()
{
    return inbox().last().toObject().value(QLatin1String("code")).toString();
}

QString Emulator::captchaAnswer(const QString &captchaId)
{
    const QJsonValue captcha = devGet(QStringLiteral("captcha/") + captchaId);
    return captcha.toObject().value(QLatin1String("answer")).toString();
}

QString Emulator::latestCaptchaAnswer()
{
    const QJsonValue latest = devGet(QStringLiteral("requests?name=captcha&limit=1"))[0];
    const QString path = latest[QLatin1String("path")].toString();
    return path.isEmpty() ? QString() : captchaAnswer(path.section(QLatin1Char('/'), -1));
}

QJsonValue Emulator::dev(const QByteArray &method, const QString &path, const QJsonObject &body)
{
    const bool sends = method == "POST" || method == "PATCH";
    const Answer answer =
        http(method, "/_dev/" + path.toUtf8(), sends ? QJsonDocument(body).toJson() : QByteArray(),
             sends ? QList<QByteArray>{"Content-Type: application/json"} : QList<QByteArray>());
    if (answer.httpStatus == 200)
        return answer.json().value(QLatin1String("result"));
    qWarning() << "emulator call failed:" << method << path << answer.httpStatus << answer.body;
    return QJsonValue(QJsonValue::Undefined);
}

Emulator::Answer Emulator::http(const QByteArray &method, const QByteArray &target,
                                const QByteArray &body, const QList<QByteArray> &headers)
{
    QByteArray request = method + ' ' + target + " HTTP/1.1\r\nConnection: close\r\n";
    bool namesHost = false;
    for (const QByteArray &header : headers) {
        request += header + "\r\n";
        namesHost = namesHost || header.startsWith("Host:");
    }
    if (!namesHost)
        request += "Host: 127.0.0.1\r\n";
    if (!body.isEmpty())
        request += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    QTcpSocket socket;
    socket.connectToHost(QUrl(m_baseUrl).host(), port());
    if (!socket.waitForConnected(deadlineMs)) {
        qWarning() << "no connection to the emulator:" << socket.errorString();
        return {};
    }
    socket.write(request + "\r\n" + body);
    const QDeadlineTimer deadline(deadlineMs);
    QByteArray answer;
    while (!deadline.hasExpired() && socket.waitForReadyRead(int(deadline.remainingTime())))
        answer += socket.readAll();
    answer += socket.readAll();
    const int end = answer.indexOf("\r\n\r\n");
    if (end < 0)
        return {};
    return {answer.mid(int(qstrlen("HTTP/1.1 ")), 3).toInt(), answer.left(end),
            answer.mid(end + 4)};
}

} // namespace VelqorPassPort::Testing
