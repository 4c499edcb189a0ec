// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// What clients send as "uuid": "<purpose>-<captcha identifier>", the captcha that a person solved
/// and what for. The identifier has 36 characters, 8-4-4-4-12 hexadecimal digits.
struct CaptchaLink
{
    QString purpose;
    QString captchaId; ///< empty when the text does not end in an identifier

    static CaptchaLink parse(const QString &text);
    static bool isCaptchaId(const QString &text);
};
