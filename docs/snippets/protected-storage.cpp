// SPDX-License-Identifier: MIT
#include <passport/Passport.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

using namespace VelqorPassPort;

//! [text]
QString protectedText(Passport &passport, const QString &text)
{
    QString result;
    if (!text.isEmpty())
        passport.serializeString(text, result);
    return result;
}

QString plainText(Passport &passport, const QString &text)
{
    QString result;
    if (!passport.deserializeData(text, result))
        return {};
    // The last block was completed with zero bytes.
    while (result.endsWith(QChar(u'\0')))
        result.chop(1);
    return result;
}
//! [text]

//! [file]
bool store(Passport &passport, const QJsonObject &settings, const QString &path)
{
    const auto json = QString::fromUtf8(QJsonDocument(settings).toJson());
    const QString text = protectedText(passport, json);
    return !text.isEmpty() && passport.setFileContent(path, text);
}

QJsonObject load(Passport &passport, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString json = plainText(passport, QString::fromLatin1(file.readAll()));
    return QJsonDocument::fromJson(json.toUtf8()).object();
}
//! [file]
