#include "Web.h"

#include <QtCore/QFileInfo>
#include <QtCore/QUrl>

using namespace VelqorPassPort;

namespace {

constexpr char bundled[] = "openweburl.app/Contents/MacOS/openweburl";
constexpr char apart[] = "openweburl";

} // namespace

Web::Web(Host &host, const WebOptions &options) : m_host(host), m_options(options)
{
    Passport *passport = &host.passport();
    const auto result = [this](const QString &sentence, const Output::Rows &rows) {
        m_hasResult = true;
        note(sentence, rows);
    };
    QObject::connect(passport, &Passport::tokenReceived, passport, [=](const QString &token) {
        result(QStringLiteral("tokenReceived"), {{QStringLiteral("token"), secret(token)}});
    });
    QObject::connect(passport, &Passport::userIdReceived, passport, [=](const QString &userId) {
        result(QStringLiteral("userIdReceived"), {{QStringLiteral("userId"), userId}});
    });
    QObject::connect(passport, &Passport::userLoadSuccess, passport,
                     [=](const QString &name, const QString &password, const QString &phoneArea) {
                         result(QStringLiteral("userLoadSuccess"),
                                {{QStringLiteral("userName"), name},
                                 {QStringLiteral("passWord"), secret(password)},
                                 {QStringLiteral("phoneArea"), phoneArea}});
                     });
    QObject::connect(passport, &Passport::supplySuccess, passport,
                     [=] { result(QStringLiteral("supplySuccess"), {}); });
    QObject::connect(passport, &Passport::webpageClosed, passport,
                     [this] { note(QStringLiteral("webpageClosed"), {}); });
}

Exit Web::signIn()
{
    if (const auto early = prepare(apart))
        return *early;
    m_host.passport().openLoginURL(true, m_options.address, m_options.text);
    return end(QStringLiteral("a sign-in"));
}

Exit Web::signUp()
{
    if (const auto early = prepare(bundled))
        return *early;
    m_host.passport().openRegisterURL(m_options.closes, m_options.address, m_options.text);
    return end(QStringLiteral("an account"));
}

Exit Web::forgotten()
{
    if (const auto early = prepare(bundled))
        return *early;
    m_host.passport().openForgitURL(m_options.closes, m_options.address, m_options.text);
    return end(QStringLiteral("a new password"));
}

Exit Web::addInformation(const QString &user, const QString &phoneArea)
{
    if (const auto early = prepare(bundled))
        return *early;
    return m_host.withAccount(user, phoneArea, false, [this](const QVariantMap &) {
        Passport &passport = m_host.passport();
        passport.openAddInfoURL(passport.token(), m_options.closes, m_options.address,
                                m_options.text);
        return end(QStringLiteral("the information being saved"));
    });
}

Exit Web::open()
{
    const QUrl url(m_options.address);
    const QStringList schemes{QStringLiteral("http"), QStringLiteral("https"),
                              QStringLiteral("file")};
    if (!url.isValid() || !schemes.contains(url.scheme())) {
        return m_host.output().failure(
            Exit::Usage,
            QStringLiteral("\"%1\" is not an http, https or file address").arg(m_options.address));
    }
    if (const auto early = prepare(bundled))
        return *early;
    m_host.passport().openURL(url, m_options.text);
    m_hasResult = true;
    return end({});
}

// The library cannot say that there is no web tool: to it that is a page closed at once.
std::optional<Exit> Web::prepare(const char *program)
{
    if (const auto early = m_host.prepare(true))
        return early;
    const QString path =
        m_host.passportDir() + QStringLiteral("/openweburl/") + QString::fromLatin1(program);
    if (QFileInfo(path).isExecutable() && QFileInfo(path).isFile())
        return std::nullopt;
    return m_host.output().failure(
        Exit::Configuration, QStringLiteral("%1: no program, the web tool is missing").arg(path));
}

void Web::note(const QString &sentence, const Output::Rows &rows)
{
    QJsonObject signal{{QStringLiteral("signal"), sentence}};
    for (const auto &[name, value] : rows)
        signal.insert(name, value);
    m_signals.append(signal);
    m_host.output().report(sentence, rows);
}

QString Web::secret(const QString &text) const
{
    return m_options.showsSecrets || text.isEmpty() ? text : QStringLiteral("(not shown)");
}

Exit Web::end(const QString &missing) const
{
    if (!m_hasResult) {
        return m_host.output().failure(Exit::Refused,
                                       QStringLiteral("the page was closed without ") + missing);
    }
    return m_host.output().success(QStringLiteral("The page has been closed"), {},
                                   {{QStringLiteral("signals"), m_signals}});
}
