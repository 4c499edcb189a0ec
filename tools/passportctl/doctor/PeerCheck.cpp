// SPDX-License-Identifier: MIT
#include "BundledChecks.h"
#include "ServiceProbe.h"

#include <QtCore/QUrl>

namespace {

QString nameOf(const QStringList &commonName, const QStringList &organization)
{
    return commonName.value(0, organization.value(0, QStringLiteral("nobody")));
}

QString describe(const QSslCertificate &certificate)
{
    const auto subject = [&](QSslCertificate::SubjectInfo info) {
        return certificate.subjectInfo(info);
    };
    const auto issuer = [&](QSslCertificate::SubjectInfo info) {
        return certificate.issuerInfo(info);
    };
    return QStringLiteral("%1, issued by %2, good from %3 to %4")
        .arg(nameOf(subject(QSslCertificate::CommonName), subject(QSslCertificate::Organization)),
             nameOf(issuer(QSslCertificate::CommonName), issuer(QSslCertificate::Organization)),
             certificate.effectiveDate().toString(Qt::ISODate),
             certificate.expiryDate().toString(Qt::ISODate));
}

void checkClock(const QString &address, const QDateTime &time, Findings &findings)
{
    constexpr qint64 tolerated = 300; // seconds
    const qint64 ahead = time.secsTo(QDateTime::currentDateTimeUtc());
    findings.addFact("clockAheadSeconds", QStringLiteral("clock ahead"), static_cast<double>(ahead),
                     QStringLiteral("s"));
    if (qAbs(ahead) > tolerated)
        findings.addWarning(
            address,
            QStringLiteral("this machine's clock is %1 minutes %2 the service's")
                .arg(qAbs(ahead) / 60)
                .arg(ahead > 0 ? QStringLiteral("ahead of") : QStringLiteral("behind")),
            QStringLiteral("Set the clock: certificates are judged by it."));
}

void checkCertificate(const QString &address, const ServiceProbe &probe, Findings &findings)
{
    constexpr qint64 soon = 14; // days
    const QDateTime end = probe.certificate.expiryDate();
    findings.addFact("serviceCertificate", QStringLiteral("service's certificate"),
                     describe(probe.certificate));
    const qint64 days = QDateTime::currentDateTimeUtc().daysTo(end);
    if (probe.problem.isEmpty() && days < soon)
        findings.addWarning(address, QStringLiteral("its certificate expires in %1 days").arg(days),
                            QStringLiteral("Have the service's operator renew it."));
}

bool explainFailure(const QString &address, const ServiceProbe &probe,
                    const Nubelo::TransferRules &rules, Findings &findings)
{
    if (!probe.certificate.isNull() && !probe.problem.isEmpty()) {
        findings.addError(Exit::Unreachable, withoutUser(address), probe.problem,
                          QStringLiteral("Compare the service's certificate with the "
                                         "certificates that are accepted, and both with the "
                                         "clock."));
        return true;
    }
    const QString versioned = address + QStringLiteral("/v1");
    if (!probe.problem.isEmpty() || !ServiceProbe::ask(versioned, rules).isAccountService)
        return false;
    findings.addError(
        Exit::Unreachable, withoutUser(address),
        QStringLiteral("there is no account service, but at %1").arg(withoutUser(versioned)),
        QStringLiteral("Add \"/v1\" to the address."));
    return true;
}

} // namespace

bool checkPeer(const Nubelo::Configuration &configuration, bool answers, Findings &findings)
{
    const QString address = configuration.addresses.value(QStringLiteral("cloud"));
    const ServiceProbe probe = ServiceProbe::ask(address, configuration.rules);
    if (probe.time.isValid())
        checkClock(withoutUser(address), probe.time, findings);
    if (!probe.certificate.isNull())
        checkCertificate(withoutUser(address), probe, findings);
    return !answers && explainFailure(address, probe, configuration.rules, findings);
}
