// SPDX-License-Identifier: MIT
#include "support/PassportDirectory.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

PassportDirectory::PassportDirectory()
{
    if (!m_directory.isValid() || !QDir(path()).mkpath("config"))
        qFatal("no temporary passport directory: %s", qPrintable(m_directory.errorString()));
}

QString PassportDirectory::path() const
{
    return m_directory.path();
}

QString PassportDirectory::filePath(const QString &relative) const
{
    return m_directory.filePath(relative);
}

void PassportDirectory::write(const QString &relative, const QByteArray &content) const
{
    QFile file(filePath(relative));
    QDir().mkpath(QFileInfo(file).path());
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

void PassportDirectory::writeSystemCfg(const QJsonObject &document) const
{
    write("config/SystemCfg.cfg", QJsonDocument(document).toJson());
}

void PassportDirectory::writePassportCfg(const QJsonObject &document) const
{
    write("config/PassPortCfg.cfg", QJsonDocument(document).toJson());
}

QByteArray PassportDirectory::read(const QString &relative) const
{
    QFile file(filePath(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
