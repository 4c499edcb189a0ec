#include "support/Certificates.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslKey>

namespace {

const QStringList newKey{"-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"};

} // namespace

Certificates::Certificates()
{
    m_valid = run(QStringList{"req", "-x509", "-subj", "/CN=Test Authority", "-days", "2",
                              "-keyout", file("authority.key"), "-out", authority()} +
                  newKey);
}

bool Certificates::run(const QStringList &arguments) const
{
    QProcess openssl;
    openssl.start("openssl", arguments);
    return openssl.waitForFinished() && openssl.exitCode() == 0;
}

QSslConfiguration Certificates::server(const QString &host, int days, bool selfSigned)
{
    QFile extensions(file("extensions"));
    extensions.open(QIODevice::WriteOnly);
    extensions.write("subjectAltName=" + host.toUtf8() + '\n');
    extensions.close();
    const QStringList signer = selfSigned ? QStringList{"-signkey", file("server.key")}
                                          : QStringList{"-CA", authority(), "-CAkey",
                                                        file("authority.key"), "-CAcreateserial"};
    m_valid = m_valid &&
              run(QStringList{"req", "-new", "-subj", "/CN=server", "-keyout", file("server.key"),
                              "-out", file("server.csr")} +
                  newKey) &&
              run(QStringList{"x509", "-req", "-in", file("server.csr"), "-out", file("server.pem"),
                              "-days", QString::number(days), "-extfile", extensions.fileName()} +
                  signer);

    QFile key(file("server.key"));
    key.open(QIODevice::ReadOnly);
    QSslConfiguration configuration;
    configuration.setLocalCertificateChain(QSslCertificate::fromPath(file("server.pem")));
    configuration.setPrivateKey(QSslKey(&key, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}
