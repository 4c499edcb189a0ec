// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QUrl>

namespace Nubelo {

/// The proxy to ask for `url`, empty for none. `rule` is "none", a proxy's address, or "system":
/// what the environment says now in `http_proxy`, `https_proxy` or `all_proxy`, never for this
/// machine itself nor for what `no_proxy` names. A proxy of the environment leaves the name of its
/// variable in `origin`.
QByteArray proxyFor(const QByteArray &rule, const QUrl &url, QByteArray *origin = nullptr);

} // namespace Nubelo
