// SPDX-License-Identifier: MIT
#include "BundledChecks.h"

#include "../Nearest.h"

#include <QtCore/QUrl>
#include <QtNetwork/QHostAddress>

#include <algorithm>

using Nubelo::Configuration;

namespace {

const QString requestsName = QStringLiteral("requests");
const QString environmentsName = QStringLiteral("environments");

QVariantMap part(const QVariantMap &map, const QString &name)
{
    return map.value(name).toMap();
}

/// The members that have an effect at a place, such as {"timeouts"}.
QVariantMap knownAt(const QStringList &place)
{
    QVariantMap level = Configuration::builtIn();
    for (int depth = 0; depth < place.size(); ++depth) {
        const bool isOwnName = depth > 0 && !level.contains(place[depth]);
        level = (isOwnName ? level.first() : level.value(place[depth])).toMap();
    }
    return level;
}

QString nearestMember(const QString &name, const QStringList &place)
{
    const QString path = place.join(QLatin1Char('.'));
    const QString near = nearestName(name, knownAt(place).keys());
    if (!near.isEmpty())
        return path.isEmpty() ? near : path + QLatin1Char('.') + near;
    // It may have been meant for another object.
    const QVariantMap known = Configuration::builtIn();
    for (auto object = known.begin(); object != known.end(); ++object) {
        if (object.key() != requestsName && object->toMap().contains(name))
            return object.key() + QLatin1Char('.') + name;
    }
    return {};
}

/// Looks at the configuration of the options, and says of each member where it was written.
class MemberCheck
{
public:
    MemberCheck(const HostOptions &options, Findings &findings)
        : m_options(options)
        , m_findings(findings)
    {
    }

    bool readFile(QVariantMap &data);
    void checkNames(const QVariantMap &data, const QStringList &place = {});
    bool checkForms(const QVector<Nubelo::WrongMember> &wrong);
    bool checkEnvironment(const Configuration &configuration);
    void checkEffects(const Configuration &configuration);

private:
    QString origin(const QString &member) const;
    void addUnknown(const QString &name, const QStringList &place);
    void checkMethods(const QVariantMap &requests);
    void warn(const QString &member, const QString &what, const QString &advice)
    {
        m_findings.addWarning(origin(member), what, advice);
    }

    const HostOptions &m_options;
    Findings &m_findings;
};

QString MemberCheck::origin(const QString &member) const
{
    if (!m_options.address.isEmpty() && member.startsWith(environmentsName) &&
        member.endsWith(QStringLiteral(".cloud")))
        return m_options.address == qEnvironmentVariable("PASSPORT_CLOUD")
                   ? QStringLiteral("PASSPORT_CLOUD")
                   : QStringLiteral("--cloud");
    if (!m_options.environment.isEmpty() && member == QLatin1String("cloudEnvironment"))
        return QStringLiteral("--environment");
    if (m_options.configFile.isEmpty())
        return member;
    return QStringLiteral("%1, %2").arg(m_options.configFile, member);
}

bool MemberCheck::readFile(QVariantMap &data)
{
    QString problem;
    const auto code = Configuration::readFile(m_options.configFile, data, problem);
    if (code != Nubelo::Error::NoError)
        m_findings.addError(
            Exit::Configuration, m_options.configFile, problem,
            QStringLiteral("The cloud configuration is a file with one JSON object."));
    return code == Nubelo::Error::NoError;
}

void MemberCheck::checkNames(const QVariantMap &data, const QStringList &place)
{
    const QVariantMap known = knownAt(place);
    for (auto member = data.begin(); member != data.end(); ++member) {
        if (!known.contains(member.key()) && place != QStringList{environmentsName})
            addUnknown(member.key(), place);
        else if (known.value(member.key(), QVariantMap()).type() != QVariant::Map)
            continue;
        const bool isObject = member->type() == QVariant::Map;
        if (isObject && (known.contains(member.key()) || !place.isEmpty()))
            checkNames(member->toMap(), place + QStringList{member.key()});
    }
}

void MemberCheck::addUnknown(const QString &name, const QStringList &place)
{
    const QString path = (place + QStringList{name}).join(QLatin1Char('.'));
    const QString near = nearestMember(name, place);
    const QString question = QStringLiteral("Did you mean \"%1\"?").arg(near);
    const QString parent = place.value(0);
    if (parent == requestsName && place.size() == 1) {
        const QString what = QStringLiteral("the library itself sends no such request");
        if (near.isEmpty())
            m_findings.addNote(origin(path), what,
                               QStringLiteral("It serves the host's own requestNubelo()."));
        else
            warn(path, what, question);
        return;
    }
    const QString known = knownAt(place).keys().join(QStringLiteral(", "));
    warn(path, QStringLiteral("the library knows no such member: it has no effect"),
         near.isEmpty() ? QStringLiteral("Take it out; known here: %1.").arg(known) : question);
}

bool MemberCheck::checkForms(const QVector<Nubelo::WrongMember> &wrong)
{
    for (const Nubelo::WrongMember &member : wrong)
        m_findings.addError(
            Exit::Configuration, origin(member.path), member.problem,
            QStringLiteral("The library refuses the whole configuration until it is right."));
    return wrong.isEmpty();
}

bool MemberCheck::checkEnvironment(const Configuration &configuration)
{
    if (configuration.addresses.contains(QStringLiteral("cloud")))
        return true;
    const QVariantMap all = Configuration::merged(Configuration::builtIn(), configuration.data);
    const QVariantMap environments = part(all, environmentsName);
    const QString chosen = all.value(QStringLiteral("cloudEnvironment")).toString();
    const QStringList names = environments.keys();
    const QString near = nearestName(chosen, names);
    QString member = QStringLiteral("cloudEnvironment");
    QString what = QStringLiteral("no environment is chosen");
    QString advice = QStringLiteral("Choose one of: %1.").arg(names.join(QStringLiteral(", ")));
    if (environments.contains(chosen)) {
        member = QStringLiteral("environments.%1.cloud").arg(chosen);
        what = QStringLiteral("the environment has no address");
        advice = QStringLiteral("Give the address of the account service.");
    } else if (!chosen.isEmpty()) {
        what = QStringLiteral("there is no environment \"%1\"").arg(chosen);
        if (!near.isEmpty())
            advice = QStringLiteral("Did you mean \"%1\"?").arg(near);
    }
    m_findings.addError(Exit::Configuration, origin(member), what, advice);
    return false;
}

void MemberCheck::checkMethods(const QVariantMap &requests)
{
    const QVariantMap own = part(Configuration::builtIn(), requestsName);
    const QString key = QStringLiteral("method");
    for (auto request = requests.begin(); request != requests.end(); ++request) {
        const QVariant usual = part(own, request.key()).value(key);
        const QVariant method = request->toMap().value(key, usual);
        if (usual.isValid() && method != usual)
            warn(QStringLiteral("requests.%1.method").arg(request.key()),
                 QStringLiteral("the library sends this request as %1 all the same")
                     .arg(usual.toString()),
                 QStringLiteral("Take it out: it has no effect."));
    }
}

void MemberCheck::checkEffects(const Configuration &configuration)
{
    const QVariantMap &data = configuration.data;
    checkMethods(part(data, requestsName));
    const auto &rules = configuration.rules;
    const QVariantMap timeouts = part(data, QStringLiteral("timeouts"));
    if (rules.connectDeadline > rules.totalDeadline &&
        timeouts.contains(QStringLiteral("connectMs")))
        warn(QStringLiteral("timeouts.connectMs"),
             QStringLiteral("it has no effect: totalMs (%1) ends the request before")
                 .arg(rules.totalDeadline.count()),
             QStringLiteral("Make it smaller than totalMs."));

    const QUrl address(configuration.addresses.value(QStringLiteral("cloud")));
    if (address.scheme() == QLatin1String("https"))
        return;
    const QVariantMap tls = part(data, QStringLiteral("tls"));
    for (auto member = tls.begin(); member != tls.end(); ++member) {
        if (part(Configuration::builtIn(), QStringLiteral("tls")).contains(member.key()))
            warn(QStringLiteral("tls.") + member.key(),
                 QStringLiteral("it has no effect: the address is not https"),
                 QStringLiteral("Give an https address, or take it out."));
    }
    if (address.host() != QLatin1String("localhost") && !QHostAddress(address.host()).isLoopback())
        warn(QStringLiteral("environments.%1.cloud")
                 .arg(data.value(QStringLiteral("cloudEnvironment")).toString()),
             QStringLiteral("passwords leave this machine without encryption"),
             QStringLiteral("Give an https address."));
}

} // namespace

std::optional<Configuration> checkMembers(const HostOptions &options, const QVariantMap &overrides,
                                          Findings &findings)
{
    MemberCheck check(options, findings);
    QVariantMap data;
    if (!options.configFile.isEmpty() && !check.readFile(data))
        return std::nullopt;
    check.checkNames(data);
    QVector<Nubelo::WrongMember> wrong;
    Configuration configuration =
        Configuration::parse(Configuration::merged(data, overrides), wrong);
    if (!check.checkForms(wrong) || !check.checkEnvironment(configuration))
        return std::nullopt;
    check.checkEffects(configuration);
    return configuration;
}
