// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QLoggingCategory>

namespace Nubelo {

/// The category "nubelo": why requests and configurations fail. Carries no token, password or
/// address with a query.
const QLoggingCategory &logNubelo();

} // namespace Nubelo
