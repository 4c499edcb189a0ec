// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "common/Log.h"
#include "hub/InitialWorker.h"
#include "hub/ProcessControl.h"
#include "web/WebAddress_p.h"
#include "web/WebOutput_p.h"
#include "web/WebTool_p.h"

#include <QtCore/QPointer>
#include <QtCore/QProcess>
#include <QtCore/QThread>
#include <QtCore/QUrl>

// The five flows side by side. They begin alike and differ in program, arguments, log lines, what
// they read and how they end, since web tools and hosts in the field know each of them as it is. A
// slot that a flow calls may destroy the client, which is why they ask for it again.

namespace VelqorPassPort {

namespace {

using Client = QPointer<Passport>;

// How the two flows differ that bring an account's details.
struct DetailsFlow
{
    bool logsReceiving;
    const char *textLabel;
    const char *untilEndLabel;
    const char *afterStartLabel;
    bool wantsThreeParts; // fewer than three are an error rather than empty texts
    bool logsClosing;
};

constexpr DetailsFlow registration{true, "str::::111", "qStr1::::111", "qStr2::::111", true, false};
constexpr DetailsFlow recovery{false, "str::::", "qStr1::::", "qStr2::::", false, true};

void emitDetails(const Client &client, const DetailsFlow &flow, const QString &text)
{
    qCDebug(log_lp) << "qStr0::::" << text;
    const AccountDetails details = accountDetails(text);
    qCDebug(log_lp) << flow.untilEndLabel << details.untilEnd;
    qCDebug(log_lp) << flow.afterStartLabel << details.afterStart;
    if (flow.wantsThreeParts && details.parts.size() < 3) {
        qCDebug(log_lp) << "userName....  is empty, info error";
        return;
    }
    qCDebug(log_lp) << "userName...." << details.userName() << "passWord:" << details.password()
                    << "phoneArea:" << details.phoneArea();
    if (client) {
        Q_EMIT client->userLoadSuccess(details.userName(), details.password(), details.phoneArea());
    }
}

// The page has time to say that all went well before it is closed.
void closeWebTool(const DetailsFlow &flow, const QString &name)
{
    constexpr unsigned long readingMs = 2000;
    if (flow.logsClosing)
        qCDebug(log_lp) << "mireth01 start msleep";
    QThread::msleep(readingMs);
    if (flow.logsClosing)
        qCDebug(log_lp) << "mireth01 end   msleep";
    g_terminateProcess(name);
    if (flow.logsClosing)
        qCDebug(log_lp) << "mireth01 close webtool";
}

void receiveDetails(const Client &client, const DetailsFlow &flow, bool closes, const QString &name,
                    QProcess &tool)
{
    if (flow.logsReceiving)
        qCDebug(log_lp) << "Register openRegisterUrl still receiving std cout";
    const QString text = textOf(readChunk(tool));
    qCDebug(log_lp) << flow.textLabel << text;
    if (text.contains(QLatin1String("userLoadSuccess"))) {
        emitDetails(client, flow, text);
        if (closes)
            closeWebTool(flow, name);
    } else if (text.contains(QLatin1String("closeSignal"))) {
        qCDebug(log_lp) << "closeSignal received close web tool";
        g_terminateProcess(name);
    }
}

// What the page of one sign-in has brought so far.
struct SignInSeen
{
    bool token = false;
    bool userId = false;
};

void receiveSignIn(const Client &client, bool flag, SignInSeen &seen, QProcess &tool)
{
    const QByteArray chunk = readChunk(tool);
    const std::optional<QString> token =
        valueBetween(chunk, QByteArrayLiteral("openLoginURL_token_start"),
                     QByteArrayLiteral("openLoginURL_token_end"));
    if (token) {
        qCDebug(log_lp) << "qStr0::::" << chunk;
        if (client)
            Q_EMIT client->tokenReceived(*token);
        seen.token = true;
    }
    const std::optional<QString> userId =
        valueBetween(chunk, QByteArrayLiteral("openLoginURL_user_id_start"),
                     QByteArrayLiteral("openLoginURL_user_id_end"));
    if (userId) {
        qCDebug(log_lp) << "qStr0::::" << chunk;
        if (client)
            Q_EMIT client->userIdReceived(*userId);
        seen.userId = true;
    }
    // The tool is not closed: it ends by itself.
    if (flag && seen.token && seen.userId)
        qCDebug(log_lp) << "mireth01 received token and id" << flag;
}

void receiveCompletion(const Client &client, bool closes, const QString &name, QProcess &tool)
{
    const QString text = textOf(readChunk(tool));
    qCDebug(log_lp) << "str::::" << text;
    if (!text.contains(QLatin1String("supplyResult success!")))
        return;
    qCDebug(log_lp) << "supplyResult success!";
    if (client)
        Q_EMIT client->supplySuccess();
    // The same command on every platform; where there is none the user closes the page.
    if (closes) {
        QProcess::execute(QStringLiteral("taskkill"),
                          {QStringLiteral("/im"), name, QStringLiteral("/f")});
    }
}

} // namespace

void Passport::openURL(QUrl url, QString text)
{
    const Client client(this);
    const int timeout = m_initialWorker->reloadTiemout();
    qCDebug(log_lp) << "reload____" << timeout;
    WebTool tool(m_passportDir, m_webHelperPath);
    qCDebug(log_lp) << "start openurl::::" << m_webHelperPath << url;
    qCDebug(log_lp) << "start openurl::::" << tool.programPath();
    tool.start({url.toString(), text, QString::number(timeout)});
    tool.waitForEnd();
    if (client)
        Q_EMIT webpageClosed();
}

void Passport::openLoginURL(bool flag, QString path, QString text)
{
    const Client client(this);
    const QString page = WebAddress(m_passportDir).ofPage(path);
    const int timeout = m_initialWorker->reloadTiemout();
    // Not the program of the other flows: sign-in has always had one of its own.
    WebTool tool(m_passportDir, QStringLiteral("openweburl"));
    qCDebug(log_lp) << "openLoginURL urlStr::::" << page;
    qCDebug(log_lp) << "openLoginURL openurl::::" << tool.programPath();
    tool.setReceiver([client, flag, seen = SignInSeen()](QProcess &output) mutable {
        receiveSignIn(client, flag, seen, output);
    });
    tool.start({page, text, QString::number(timeout)});
    tool.waitForEnd();
    if (client)
        Q_EMIT webpageClosed();
}

void Passport::openRegisterURL(bool closes, QString path, QString text)
{
    const Client client(this);
    const WebAddress address(m_passportDir);
    const QString page = address.ofPage(path);
    const int timeout = m_initialWorker->reloadTiemout();
    WebTool tool(m_passportDir, m_webHelperPath);
    qCDebug(log_lp) << "oopenweburl" << address.configuration();
    qCDebug(log_lp) << "openRegisterURL openurl::::" << page;
    qCDebug(log_lp) << "openRegisterURL openurl::::" << tool.programPath();
    tool.setReceiver([client, closes, name = m_webHelperPath](QProcess &output) {
        receiveDetails(client, registration, closes, name, output);
    });
    tool.mergeStandardError();
    tool.start({page, text, QString::number(timeout)});
    qCDebug(log_lp) << "Register openRegisterUrl started and wait for finished";
    tool.waitForEnd();
    qCDebug(log_lp) << "Register openRegisterUrl finished emit webpageClosed signal";
    if (client)
        Q_EMIT webpageClosed();
}

void Passport::openForgitURL(bool closes, QString path, QString text)
{
    const Client client(this);
    const QString page = WebAddress(m_passportDir).ofPage(path);
    const int timeout = m_initialWorker->reloadTiemout();
    WebTool tool(m_passportDir, m_webHelperPath);
    qCDebug(log_lp) << "openForgitURL urlStr::::" << page;
    qCDebug(log_lp) << "openForgitURL openurl::::" << tool.programPath();
    tool.setReceiver([client, closes, name = m_webHelperPath](QProcess &output) {
        receiveDetails(client, recovery, closes, name, output);
    });
    tool.start({page, text, QString::number(timeout)});
    tool.waitForEnd();
    if (client)
        Q_EMIT webpageClosed();
}

// Emits nothing at its end: hosts take supplySuccess() for the end of this flow.
void Passport::openAddInfoURL(QString token, bool closes, QString path, QString text)
{
    // For the web tool, which inherits it; stays set in this process too.
    qputenv("QTWEBENGINE_REMOTE_DEBUGGING", QByteArrayLiteral("1112"));
    const WebAddress address(m_passportDir);
    const QString page = address.ofPage(path);
    const QStringList arguments{page, token, address.base(), text};
    WebTool tool(m_passportDir, m_webHelperPath);
    qCDebug(log_lp) << "openAddInfoURL token:::" << token;
    qCDebug(log_lp) << "openAddInfoURL urlStr::::" << page;
    qCDebug(log_lp) << "openAddInfoURL list::::" << arguments;
    qCDebug(log_lp) << "openAddInfoURL openurl::::" << tool.programPath();
    tool.setReceiver([client = Client(this), closes, name = m_webHelperPath](QProcess &output) {
        receiveCompletion(client, closes, name, output);
    });
    tool.start(arguments);
    tool.waitForEnd();
}

} // namespace VelqorPassPort
