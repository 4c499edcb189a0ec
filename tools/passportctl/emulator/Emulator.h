// SPDX-License-Identifier: MIT
#pragma once

#include "../Host.h"

#include <QtCore/QJsonValue>

/// What a passport-emulator tells beyond what an account service answers: its own calls, such as
/// "inbox", below /_dev/ at the service's address. The host is configured.
namespace Emulator {

/// The result of a call, sent with `body` unless that is empty; undefined when no emulator answers
/// or it refuses, which `refusal` then tells in its words.
QJsonValue ask(Host &host, const QString &call, const QVariantMap &body = {},
               QString *refusal = nullptr);

/// The text in the picture of the captcha that was fetched last.
QString captchaText(Host &host);

/// The verification code that was sent last.
QString verificationCode(Host &host);

} // namespace Emulator
