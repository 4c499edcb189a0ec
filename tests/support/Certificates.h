#pragma once

#include <QtCore/QString>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QSslConfiguration>

/// A throw-away certificate authority, made with the openssl command in a directory of its own.
class Certificates
{
public:
    Certificates();

    bool isValid() const { return m_valid; }
    QString authority() const { return m_directory.filePath("authority.pem"); }

    /// For a server whose certificate names `host` (such as "IP:127.0.0.1") and is good for `days`;
    /// a negative number has it expired. `selfSigned` leaves the authority out.
    QSslConfiguration server(const QString &host, int days = 1, bool selfSigned = false);

private:
    bool run(const QStringList &arguments) const;
    QString file(const QString &name) const { return m_directory.filePath(name); }

    QTemporaryDir m_directory;
    bool m_valid = false;
};
