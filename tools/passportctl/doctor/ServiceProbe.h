// SPDX-License-Identifier: MIT
#pragma once

#include <nubelo/Configuration_p.h>

#include <QtCore/QDateTime>
#include <QtNetwork/QSslCertificate>

/// What a server says beside the answer that the library reads.
struct ServiceProbe
{
    bool isAccountService = false; ///< the answer has the form of an account service's
    QDateTime time;                ///< by its header or its answer; invalid where it tells none
    QSslCertificate certificate;   ///< the server's own, also one that was not accepted
    QString problem;               ///< why there is no answer; empty when there is one

    /// GETs "status" below `address` by the same rules as the library's requests. Blocks, without
    /// events, for the rules' deadlines at most; a second time for a certificate not accepted.
    static ServiceProbe ask(const QString &address, const Nubelo::TransferRules &rules);
};
