// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

/// A passport directory of its own for one test, removed at the end.
class PassportDirectory
{
public:
    PassportDirectory();

    /// Without a trailing slash, as hosts pass it.
    QString path() const;
    QString filePath(const QString &relative) const;

    /// Writes a file below the directory, creating what directories it needs.
    void write(const QString &relative, const QByteArray &content) const;
    void writeSystemCfg(const QJsonObject &document) const;
    void writePassportCfg(const QJsonObject &document) const;

    /// All bytes of a file below the directory; empty when there is none.
    QByteArray read(const QString &relative) const;

private:
    QTemporaryDir m_directory;
};
