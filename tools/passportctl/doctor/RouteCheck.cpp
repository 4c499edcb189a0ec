// SPDX-License-Identifier: MIT
#include "BundledChecks.h"

#include <nubelo/Proxy_p.h>

#include <QtCore/QFileInfo>
#include <QtNetwork/QSslCertificate>

#include <curl/curl.h>

namespace {

QString systemCertificates()
{
#if LIBCURL_VERSION_NUM >= 0x075400
    const curl_version_info_data *info = curl_version_info(CURLVERSION_NOW);
    QStringList places{QString::fromLocal8Bit(info->cainfo), QString::fromLocal8Bit(info->capath)};
    places.removeAll(QString());
    return places.join(QStringLiteral(", "));
#else
    return QStringLiteral("those of libcurl");
#endif
}

void checkCertificateFile(const QString &path, Findings &findings)
{
    const QFileInfo file(path);
    const auto fail = [&](const QString &what) {
        findings.addError(Exit::Configuration, path, what,
                          QStringLiteral("tls.caFile names a file with the certificates of the "
                                         "accepted authorities in PEM."));
    };
    if (!file.isFile())
        return fail(QStringLiteral("there is no such file"));
    if (!file.isReadable())
        return fail(QStringLiteral("it cannot be read"));
    const int count =
        QSslCertificate::fromPath(path, QSsl::Pem, QSslCertificate::PatternSyntax::FixedString)
            .size();
    if (count == 0)
        return fail(QStringLiteral("there is no certificate in it"));
    findings.addFact("certificates", QStringLiteral("certificates"), path);
}

/// The proxy and where it comes from.
QString proxyOf(const Nubelo::Configuration &configuration, const QUrl &address)
{
    QByteArray variable;
    const QByteArray proxy = Nubelo::proxyFor(configuration.rules.proxy, address, &variable);
    // Before the "@" may stand a name and a password: they are not printed.
    const QString shown = QString::fromLocal8Bit(proxy).section(QLatin1Char('@'), -1);
    const QString origin =
        variable.isEmpty() ? QStringLiteral("configuration") : QString::fromLatin1(variable);
    return proxy.isEmpty() ? QStringLiteral("none")
                           : QStringLiteral("%1, from %2").arg(shown, origin);
}

} // namespace

QString checkRoute(const Nubelo::Configuration &configuration, Findings &findings)
{
    const QUrl address(configuration.addresses.value(QStringLiteral("cloud")));
    QString proxy = proxyOf(configuration, address);
    findings.addFact("proxy", QStringLiteral("proxy"), proxy);
    const QString file = QFile::decodeName(configuration.rules.caFile);
    if (address.scheme() != QLatin1String("https"))
        findings.addFact("certificates", QStringLiteral("certificates"),
                         QStringLiteral("none, the address is not https"));
    else if (file.isEmpty())
        findings.addFact("certificates", QStringLiteral("certificates"), systemCertificates());
    else
        checkCertificateFile(file, findings);
    return proxy;
}
