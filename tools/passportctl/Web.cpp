// SPDX-License-Identifier: MIT
#include "Command.h"
#include "WebTool.h"

#include <config/PassportDirectory_p.h>

#include <QtCore/QJsonArray>
#include <QtCore/QUrl>

using namespace VelqorPassPort;

namespace {

/// A page of the account service in the web tool, from its start to its end.
///
/// Prints what the library's signals bring as they come, as JSON all of it at the end; tokens and
/// passwords only with --show-secrets. Ends with Refused when the page was closed without a result,
/// and with Configuration when there is no web tool in the passport directory.
class WebCommand : public Command
{
public:
    Exit run(Host &host) override;

protected:
    /// `program`: of the web tool, below its folder. `outcome`: what a page has to bring, for
    /// telling the user; none: nothing.
    WebCommand(const char *program, const QString &outcome) : m_program(program), m_outcome(outcome)
    {
    }

    void declarePage(CLI::App &app)
    {
        addText(app, "--page", m_page, "Path below the web service's address");
        declareText(app);
    }
    void declareText(CLI::App &app)
    {
        addText(app, "--text", m_text, "For the page, usually a language");
    }
    void declareClose(CLI::App &app)
    {
        addFlag(app, "--close", m_closes, "Close the page after its result");
    }
    void declareSecrets(CLI::App &app)
    {
        addFlag(app, "--show-secrets", m_showsSecrets, "Print tokens and passwords too");
    }

    /// Shows the page until it is closed; returns early with a failure that it has printed.
    virtual std::optional<Exit> show(Host &host) = 0;

    QString page(const char *usual) const
    {
        return m_page.isEmpty() ? QString::fromLatin1(usual) : m_page;
    }

    QString m_text = QStringLiteral("en-us");
    bool m_closes = false;

private:
    std::optional<Exit> findProgram(const Host &host) const;
    void listen(Host &host);
    void note(const Output &output, const QString &signal, const Output::Rows &rows);
    QString secret(const QString &text) const;

    const char *m_program;
    QString m_outcome;
    QString m_page;
    bool m_showsSecrets = false;
    bool m_hasResult = false;
    QJsonArray m_signals;
};

Exit WebCommand::run(Host &host)
{
    if (const auto end = host.prepare(PassportDir::Needed))
        return *end;
    if (const auto end = findProgram(host))
        return *end;
    listen(host);
    if (const auto end = show(host))
        return *end;
    if (!m_hasResult && !m_outcome.isEmpty()) {
        return host.output().failure(Exit::Refused,
                                     QStringLiteral("the page was closed without ") + m_outcome);
    }
    return host.output().success(QStringLiteral("The page has been closed"), {},
                                 {{QStringLiteral("signals"), m_signals}});
}

// The library cannot say that there is no web tool: to it that is a page closed at once.
std::optional<Exit> WebCommand::findProgram(const Host &host) const
{
    const QString path = PassportDirectory(host.passportDir()).webTool(QLatin1String(m_program));
    const QString problem = problemOfProgram(path);
    if (problem.isEmpty())
        return std::nullopt;
    return host.output().failure(
        Exit::Configuration, QStringLiteral("%1: %2, the web tool is missing").arg(path, problem));
}

void WebCommand::listen(Host &host)
{
    Passport *passport = &host.passport();
    const Output *output = &host.output();
    const auto result = [this, output](const QString &signal, const Output::Rows &rows) {
        m_hasResult = true;
        note(*output, signal, rows);
    };
    QObject::connect(passport, &Passport::tokenReceived, passport, [=](const QString &token) {
        result(QStringLiteral("tokenReceived"), {{QStringLiteral("token"), secret(token)}});
    });
    QObject::connect(passport, &Passport::userIdReceived, passport, [=](const QString &userId) {
        result(QStringLiteral("userIdReceived"), {{QStringLiteral("userID"), userId}});
    });
    QObject::connect(passport, &Passport::userLoadSuccess, passport,
                     [=](const QString &name, const QString &password, const QString &phoneArea) {
                         result(QStringLiteral("userLoadSuccess"),
                                {{QStringLiteral("user"), name},
                                 {QStringLiteral("password"), secret(password)},
                                 {QStringLiteral("phoneArea"), phoneArea}});
                     });
    QObject::connect(passport, &Passport::supplySuccess, passport,
                     [=] { result(QStringLiteral("supplySuccess"), {}); });
    QObject::connect(passport, &Passport::webpageClosed, passport,
                     [=] { note(*output, QStringLiteral("webpageClosed"), {}); });
}

void WebCommand::note(const Output &output, const QString &signal, const Output::Rows &rows)
{
    QJsonObject object{{QStringLiteral("signal"), signal}};
    for (const auto &[name, value] : rows)
        object.insert(name, value);
    m_signals.append(object);
    output.report(signal, rows);
}

QString WebCommand::secret(const QString &text) const
{
    return m_showsSecrets || text.isEmpty() ? text : QStringLiteral("(not shown)");
}

class WebSignIn : public WebCommand
{
public:
    WebSignIn() : WebCommand(WebTool::apart, QStringLiteral("a sign-in")) {}
    void declare(CLI::App &app) override
    {
        declarePage(app);
        declareSecrets(app);
    }
    std::optional<Exit> show(Host &host) override
    {
        host.passport().openLoginURL(true, page("/sign-in"), m_text);
        return std::nullopt;
    }
};

class WebSignUp : public WebCommand
{
public:
    WebSignUp() : WebCommand(WebTool::bundled, QStringLiteral("an account")) {}
    void declare(CLI::App &app) override
    {
        declarePage(app);
        declareClose(app);
        declareSecrets(app);
    }
    std::optional<Exit> show(Host &host) override
    {
        host.passport().openRegisterURL(m_closes, page("/sign-up"), m_text);
        return std::nullopt;
    }
};

class WebForgotten : public WebCommand
{
public:
    WebForgotten() : WebCommand(WebTool::bundled, QStringLiteral("a new password")) {}
    void declare(CLI::App &app) override
    {
        declarePage(app);
        declareClose(app);
        declareSecrets(app);
    }
    std::optional<Exit> show(Host &host) override
    {
        host.passport().openForgitURL(m_closes, page("/forgotten-password"), m_text);
        return std::nullopt;
    }
};

/// Signs in first, asking for the password.
class WebAddInfo : public WebCommand
{
public:
    WebAddInfo() : WebCommand(WebTool::bundled, QStringLiteral("the information being saved")) {}
    void declare(CLI::App &app) override
    {
        addAccount(app, m_account);
        declarePage(app);
        declareClose(app);
    }
    std::optional<Exit> show(Host &host) override
    {
        QVariantMap profile;
        if (const auto end = host.signIn(m_account, false, profile))
            return end;
        Passport &passport = host.passport();
        passport.openAddInfoURL(passport.token(), m_closes, page("/add-information"), m_text);
        return std::nullopt;
    }

private:
    Account m_account;
};

class WebOpen : public WebCommand
{
public:
    WebOpen() : WebCommand(WebTool::bundled, QString()) {}
    void declare(CLI::App &app) override
    {
        declareText(app);
        addRequiredText(app, "url", m_url, "Its address: http, https or file");
    }
    Exit run(Host &host) override
    {
        const QStringList schemes{QStringLiteral("http"), QStringLiteral("https"),
                                  QStringLiteral("file")};
        const QUrl url(m_url);
        if (url.isValid() && schemes.contains(url.scheme()))
            return WebCommand::run(host);
        return host.output().failure(
            Exit::Usage, QStringLiteral("\"%1\" is not an http, https or file address").arg(m_url));
    }
    std::optional<Exit> show(Host &host) override
    {
        host.passport().openURL(QUrl(m_url), m_text);
        return std::nullopt;
    }

private:
    QString m_url;
};

} // namespace

void addWebCommands(Commands commands)
{
    Commands web = commands.group("web", "Show a page of the account service",
                                  "web sign-in --passport-dir passport-dir");
    web.add<WebSignIn>("sign-in", "Sign in",
                       "web sign-in --passport-dir passport-dir --text zh-cn");
    web.add<WebSignUp>("sign-up", "Create an account",
                       "web sign-up --passport-dir passport-dir --close");
    web.add<WebForgotten>("forgotten", "Set a new password",
                          "web forgotten --passport-dir passport-dir");
    web.add<WebAddInfo>("add-info", "Complete an account",
                        "web add-info --passport-dir passport-dir ada@example.com");
    web.add<WebOpen>("open", "Show any page",
                     "web open --passport-dir passport-dir https://www.example.com");
}
