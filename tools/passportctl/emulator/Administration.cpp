// SPDX-License-Identifier: MIT
#include "Administration.h"

#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>

#include <chrono>
#include <map>
#include <string>

namespace {

enum class Body {
    None,
    Json, ///< the argument "json"; "-" reads standard input, so that no password is on a command
          ///< line
    File  ///< what the argument "file" names; "-" as above
};

/// A command that is one of the emulator's calls.
struct Call
{
    const char *group; ///< empty: it stands alone
    const char *name;
    const char *description;
    const char *method;
    const char *path;     ///< below /_dev/; ending in "/": the argument follows
    const char *argument; ///< empty: none
    Body body;
    const char *fixedBody; ///< sent where `body` is None; %1: the argument
    const char *columns;   ///< of a list's lines
    const char *example;   ///< what may follow the name
};

constexpr Call calls[] = {
    {"accounts", "list", "List the accounts", "GET", "accounts", "", Body::None, "",
     "user_id username email phone note", ""},
    {"accounts", "add", "Add an account, an object like those of a seed", "POST", "accounts", "",
     Body::Json, "", "", R"( '{"username": "bob", "password": "secret 1"}')"},
    {"accounts", "edit", "Change members of an account; ends no session", "PATCH", "accounts/",
     "account", Body::Json, "", "", R"( ada@example.com '{"nick_name": "Countess"}')"},
    {"accounts", "lock", "Lock an account", "PATCH", "accounts/", "account", Body::None,
     R"({"locked":true})", "", " ada@example.com"},
    {"accounts", "unlock", "Unlock an account, also one that wrong passwords locked out", "PATCH",
     "accounts/", "account", Body::None, R"({"locked":false})", "", " ada@example.com"},
    {"accounts", "delete", "Delete an account and its sessions", "DELETE", "accounts/", "account",
     Body::None, "", "", " ada@example.com"},
    {"sessions", "list", "List the sessions, the newest first", "GET", "sessions", "", Body::None,
     "", "id username at ip expires", ""},
    {"sessions", "end", "End a session", "DELETE", "sessions/", "id", Body::None, "", "", " 1"},
    {"sessions", "clear", "End all sessions", "DELETE", "sessions", "", Body::None, "", "", ""},
    {"requests", "list", "List the newest recorded requests, 1000 or 4 MiB of them", "GET",
     "requests", "", Body::None, "", "id time name httpStatus word durationMs fault", ""},
    {"requests", "clear", "Forget the recorded requests", "DELETE", "requests", "", Body::None, "",
     "", ""},
    {"faults", "list", "List the faults in force", "GET", "faults", "", Body::None, "",
     "id request kind times", ""},
    {"faults", "add", "Add a fault, an object as in the emulator's manual", "POST", "faults", "",
     Body::Json, "", "", R"( '{"request": "userLogin", "kind": "drop", "times": 1}')"},
    {"faults", "end", "End a fault", "DELETE", "faults/", "id", Body::None, "", "", " 1"},
    {"faults", "clear", "End all faults", "DELETE", "faults", "", Body::None, "", "", ""},
    {"settings", "show", "Show the settings", "GET", "settings", "", Body::None, "", "", ""},
    {"settings", "set", "Change settings, an object", "POST", "settings", "", Body::Json, "", "",
     R"( '{"codeIntervalSeconds": 0}')"},
    {"clock", "show", "Show the emulator's time", "GET", "clock", "", Body::None, "", "", ""},
    {"clock", "advance", "Move the clock forward", "POST", "clock", "seconds", Body::None,
     R"({"advanceSeconds":%1})", "", " 3600"},
    {"clock", "back", "Set the clock back to the machine's", "DELETE", "clock", "", Body::None, "",
     "", ""},
    {"", "reset", "Start again with the first accounts", "POST", "reset", "", Body::None, "{}", "",
     ""},
    {"", "export", "Print accounts and settings as a seed", "GET", "export", "", Body::None, "", "",
     " > seed.json"},
    {"", "import", "Start again with the accounts of a seed", "POST", "import", "", Body::File, "",
     "", " seed.json"},
};

QString textOf(const QJsonValue &value)
{
    return value.isObject() || value.isArray()
               ? QString::fromUtf8(
                     value.isObject()
                         ? QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact)
                         : QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact))
               : value.toVariant().toString();
}

Output::Rows rowsOf(const QJsonValue &result, const QString &columns)
{
    Output::Rows rows;
    const QJsonObject object = result.toObject();
    for (auto member = object.begin(); member != object.end(); ++member)
        rows.append({member.key(), textOf(*member)});
    const QStringList names = columns.split(QLatin1Char(' '));
    const QJsonArray list = result.toArray();
    for (const QJsonValue &line : list) {
        QStringList cells;
        for (const QString &name : names) {
            const QString cell = textOf(line[name]);
            if (!cell.isEmpty())
                cells.append(cell);
        }
        // What answers need not be an emulator: the list may have anything in it.
        rows.append({cells.value(0), cells.mid(1).join(QStringLiteral("  "))});
    }
    return rows;
}

class Administration : public Command
{
public:
    explicit Administration(const Call &call) : m_call(call) {}

    void declare(CLI::App &app) override;
    Exit run(Host &host) override;

private:
    struct Reply
    {
        bool isThere = false;
        bool ok = false;
        QJsonValue result;
    };

    Reply send(Host &host, const QByteArray &method, const QString &path,
               const QByteArray &body) const;
    QStringList numbersOfAccount(Host &host) const;
    Exit askForOneOf(const QStringList &numbers, const Output &output) const;
    bool readBody(QByteArray &body) const;
    Exit show(const Output &output, const QJsonValue &result) const;

    const Call &m_call;
    QString m_argument;
    QString m_source; ///< JSON or a file
};

void Administration::declare(CLI::App &app)
{
    const QLatin1String argument(m_call.argument);
    if (argument == QLatin1String("account"))
        addRequiredText(app, "account", m_argument, "Number, user name, e-mail or phone");
    else if (!argument.isEmpty())
        addRequiredText(app, m_call.argument, m_argument, "A number");
    if (m_call.body == Body::Json)
        addRequiredText(app, "json", m_source, "JSON object; \"-\" reads it from standard input");
    else if (m_call.body == Body::File)
        addRequiredFile(app, "file", m_source, "Seed; \"-\" reads it from standard input");
}

// Not by the library, whose call for addresses knows no DELETE or PATCH.
Administration::Reply Administration::send(Host &host, const QByteArray &method,
                                           const QString &path, const QByteArray &body) const
{
    constexpr int patienceMs = int(std::chrono::milliseconds(std::chrono::seconds(20)).count());
    QNetworkAccessManager network;
    network.setProxy(QNetworkProxy::NoProxy);
    network.setTransferTimeout(patienceMs);
    QNetworkRequest request(QUrl(host.address()).resolved(QUrl(QStringLiteral("/_dev/") + path)));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    const std::unique_ptr<QNetworkReply> reply(network.sendCustomRequest(request, method, body));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();
    const QJsonObject answer = QJsonDocument::fromJson(reply->readAll()).object();
    return {answer.contains(QStringLiteral("result")),
            answer.value(QStringLiteral("status")) == QLatin1String("ok"),
            answer.value(QStringLiteral("result"))};
}

// People know an account by its names, the emulator's calls by its number. Several where a phone
// number exists in several areas.
QStringList Administration::numbersOfAccount(Host &host) const
{
    QStringList numbers;
    const QJsonArray accounts = send(host, "GET", QStringLiteral("accounts"), {}).result.toArray();
    for (const QJsonValue &account : accounts) {
        for (const char *name : {"username", "email", "phone"}) {
            const QString number = textOf(account[QLatin1String("user_id")]);
            if (account[QLatin1String(name)].toString() == m_argument && !numbers.contains(number))
                numbers.append(number);
        }
    }
    return numbers.isEmpty() ? QStringList{m_argument} : numbers;
}

Exit Administration::askForOneOf(const QStringList &numbers, const Output &output) const
{
    return output.failure(Exit::Usage,
                          QStringLiteral("%1 names several accounts; give one of their numbers: %2")
                              .arg(m_argument, numbers.join(QLatin1String(", "))));
}

bool Administration::readBody(QByteArray &body) const
{
    QFile file(m_source);
    if (m_source == QLatin1String("-")) {
        if (!file.open(stdin, QIODevice::ReadOnly))
            return false;
    } else if (m_call.body == Body::Json) {
        body = m_source.toUtf8();
        return true;
    } else if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    // A byte more than an emulator takes: it says so then, and an endless input ends.
    constexpr int mostBytes = 16 * 1024 * 1024 + 1;
    QByteArray piece;
    do {
        piece = file.read(mostBytes - body.size());
        body += piece;
    } while (!piece.isEmpty());
    return true;
}

Exit Administration::run(Host &host)
{
    QByteArray body =
        QString::fromLatin1(m_call.fixedBody).replace(QLatin1String("%1"), m_argument).toUtf8();
    if (m_call.body != Body::None && !readBody(body)) {
        return host.output().failure(Exit::Configuration,
                                     QStringLiteral("%1 cannot be read").arg(m_source));
    }
    if (const auto end = host.prepare())
        return *end;
    QString path = QString::fromLatin1(m_call.path);
    if (path.endsWith(QLatin1Char('/'))) {
        const bool ofAccount = path == QLatin1String("accounts/");
        const QStringList numbers = ofAccount ? numbersOfAccount(host) : QStringList{m_argument};
        if (numbers.size() > 1)
            return askForOneOf(numbers, host.output());
        path += QString::fromLatin1(QUrl::toPercentEncoding(numbers.first()));
    }
    const Reply reply = send(host, m_call.method, path, body);
    if (!reply.isThere) {
        return host.output().failure(
            Exit::Unreachable,
            QStringLiteral("no passport-emulator answers at %1").arg(host.address()));
    }
    if (!reply.ok)
        return host.output().failure(Exit::Refused, reply.result.toString());
    return show(host.output(), reply.result);
}

Exit Administration::show(const Output &output, const QJsonValue &result) const
{
    const QJsonObject data{{QStringLiteral("result"), result}};
    if (qstrcmp(m_call.name, "export") == 0) {
        const QByteArray seed = QJsonDocument(result.toObject()).toJson();
        return output.success(QString::fromUtf8(seed).trimmed(), {}, data);
    }
    const Output::Rows rows = rowsOf(result, QString::fromLatin1(m_call.columns));
    return output.success(
        result.isArray() ? QStringLiteral("%1 %2").arg(rows.size()).arg(QLatin1String(m_call.group))
                         : QStringLiteral("Done"),
        rows, data);
}

} // namespace

void addAdministrationCommands(Commands commands)
{
    const Commands emulator = commands.group(
        "emulator", "Look into a passport-emulator and change it", "emulator accounts list");
    std::map<std::string, Commands> groups{{"", emulator}};
    for (const Call &call : calls) {
        auto group = groups.find(call.group);
        if (group == groups.end()) {
            const std::string description = std::string("The emulator's ") + call.group;
            group =
                groups.emplace(call.group, emulator.group(call.group, description.c_str())).first;
        }
        const std::string example = std::string("emulator ") + call.group +
                                    (*call.group == '\0' ? "" : " ") + call.name + call.example;
        group->second.add(call.name, call.description, example.c_str(),
                          std::make_shared<Administration>(call));
    }
}
