// SPDX-License-Identifier: MIT
#pragma once

#include "nubelo/Reply.h"

#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QVariantMap>

namespace Nubelo {

/// The least that libpassport needs of a Manager: no default argument, and no enumerator beyond
/// those that it uses. What a call does is decided by the ScriptedCloud.
class Manager : public QObject
{
    Q_OBJECT

public:
    enum HttpRequestType { Post = 0, Get = 1 };
    enum HttpEncryptType { NoEncrypt = 0 };
    enum CloudAuthentication { NoAuthentication = 0 };

    explicit Manager(QObject *parent);

    Reply *request(QString name, HttpRequestType type, HttpEncryptType encryption,
                   QVariantMap envelope, CloudAuthentication authentication, QVariantMap extra);
    Reply *request(QString name, HttpRequestType type, HttpEncryptType encryption,
                   QString appendToUrl, QVariantMap envelope, CloudAuthentication authentication,
                   QVariantMap extra);
    Reply *request(QString name, QVariantMap envelope, QVariantMap extra);
    Reply *setConfigPath(QString path, QVariantMap extra);
    Reply *setConfigData(QVariantMap data, QVariantMap extra);
    QVariantMap configData() const;
};

} // namespace Nubelo
