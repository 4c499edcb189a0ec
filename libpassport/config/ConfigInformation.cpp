// SPDX-License-Identifier: MIT
#include "config/ConfigInformation.h"

#include "common/Log.h"
#include "config/FileRewrite_p.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QMutex>
#include <QtCore/QTextCodec>

namespace {

QMutex &mtx()
{
    static QMutex mutex;
    return mutex;
}

QString decoded(const QByteArray &bytes)
{
    const QTextCodec *const gbk = QTextCodec::codecForName("GBK");
    return gbk ? gbk->toUnicode(bytes) : QString::fromUtf8(bytes);
}

QJsonObject parsed(const QString &text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

QByteArray serialized(const QJsonObject &object)
{
    const QByteArray json = QJsonDocument(object).toJson();
    return QString::fromUtf8(json.constData()).toLocal8Bit();
}

} // namespace

QJsonObject g_getConfigInformation(QString path)
{
    const QMutexLocker lock(&mtx());
    QFile file(path);
    if (!file.exists() || !openUnlessPipe(file, QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return parsed(decoded(file.readAll()).trimmed());
}

bool g_setConfigInformation(QString key, QString value, QString path)
{
    const QMutexLocker lock(&mtx());
    QFile file(path);
    if (!file.exists()) {
        file.open(QIODevice::WriteOnly | QIODevice::Text);
        file.close();
    }

    QJsonObject object;
    if (file.exists()) {
        if (!openUnlessPipe(file, QIODevice::ReadOnly | QIODevice::Text))
            return false;
        object = parsed(decoded(file.readAll()));
        file.close();
    }
    object.insert(key, value);

    const auto mode = QIODevice::WriteOnly | QIODevice::Text;
    if (rewriteFile(path, mode, serialized(object)) == Rewrite::NotOpened) {
        qCCritical(log_lp) << "writeFileData open file fail" << path;
        return false;
    }
    return true;
}
