#pragma once

#include "nubelo/Error.h"

#include <QtCore/QList>
#include <QtCore/QVariantMap>
#include <QtNetwork/QSslError>

namespace Nubelo {

/// How a reply ends; what its signals carry.
struct Outcome
{
    Error::ErrorCode code = Error::NoError;
    QVariantMap map;
    QList<QSslError> sslErrors;
};

} // namespace Nubelo
