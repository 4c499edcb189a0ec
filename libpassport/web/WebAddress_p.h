// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace VelqorPassPort {

/// Where the account service's web pages are, as config/PassPortCfg.cfg says: in the "url" of
/// "nubelo", or in its "testurl" when its "env" is exactly "beta".
class WebAddress
{
public:
    /// Reads the file. One that is missing or says nothing gives an empty base address.
    explicit WebAddress(const QString &passportDir);

    QJsonObject configuration() const { return m_configuration; }
    QString base() const { return m_base; }
    /// The base address and the path, with nothing put between them.
    QString ofPage(const QString &path) const { return m_base + path; }

private:
    QJsonObject m_configuration;
    QString m_base;
};

} // namespace VelqorPassPort
