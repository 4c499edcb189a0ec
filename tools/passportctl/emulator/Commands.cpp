// SPDX-License-Identifier: MIT
#include "../Command.h"
#include "Administration.h"
#include "Emulator.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace {

Exit noEmulator(Host &host)
{
    return host.output().failure(
        Exit::Unreachable,
        QStringLiteral("no passport-emulator answers at %1").arg(host.address()));
}

class Fault : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addRequiredText(app, "fault", m_fault, "JSON, as the emulator's manual describes it");
    }
    Exit run(Host &host) override;

private:
    QString m_fault;
};

Exit Fault::run(Host &host)
{
    const QJsonObject fault = QJsonDocument::fromJson(m_fault.toUtf8()).object();
    if (fault.isEmpty())
        return host.output().failure(
            Exit::Usage, QStringLiteral("a fault is a JSON object, such as "
                                        "{\"request\": \"userLogin\", \"kind\": \"drop\"}"));
    if (const auto end = host.prepare())
        return *end;
    QString refusal;
    if (Emulator::ask(host, QStringLiteral("faults"), fault.toVariantMap(), &refusal)
            .isUndefined()) {
        if (refusal.isEmpty())
            return noEmulator(host);
        return host.output().failure(Exit::Refused,
                                     QStringLiteral("the emulator refuses: ") + refusal);
    }
    return host.output().success(QStringLiteral("In force"), {},
                                 {{QStringLiteral("fault"), fault}});
}

class Inbox : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addFlag(app, "--wait", m_waits, "Wait for the next one");
    }
    Exit run(Host &host) override;

private:
    static QJsonValue nextAfter(Host &host, const QJsonArray &messages);

    bool m_waits = false;
};

/// By long polling, each poll shorter than a request's deadline.
QJsonValue Inbox::nextAfter(Host &host, const QJsonArray &messages)
{
    constexpr int pollMs = 20000;
    const int last = messages.last().toObject().value(QStringLiteral("id")).toInt();
    const QString call = QStringLiteral("inbox?after=%1&wait=%2").arg(last).arg(pollMs);
    QJsonValue answer;
    do
        answer = Emulator::ask(host, call);
    while (answer.isArray() && answer.toArray().isEmpty());
    return answer;
}

Exit Inbox::run(Host &host)
{
    if (const auto end = host.prepare())
        return *end;
    QJsonValue answer = Emulator::ask(host, QStringLiteral("inbox"));
    if (m_waits && answer.isArray())
        answer = nextAfter(host, answer.toArray());
    if (!answer.isArray())
        return noEmulator(host);
    Output::Rows rows;
    const QJsonArray messages = answer.toArray();
    for (const QJsonValue &message : messages) {
        const auto text = [&](const char *name) { return message[QLatin1String(name)].toString(); };
        rows.append(
            {text("time"),
             QStringLiteral("%1  %2  %3").arg(text("code"), text("purpose"), text("username"))});
    }
    return host.output().success(rows.size() == 1 ? QStringLiteral("1 code")
                                                  : QStringLiteral("%1 codes").arg(rows.size()),
                                 rows, {{QStringLiteral("inbox"), messages}});
}

} // namespace

void addEmulatorCommands(Commands commands)
{
    commands.add<Fault>("fault", "Have a passport-emulator spoil answers",
                        R"(fault '{"request": "userLogin", "kind": "delay", "ms": 3000}')");
    commands.add<Inbox>("inbox", "Show the codes that a passport-emulator sent", "inbox --wait");
    addAdministrationCommands(commands);
}
