// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// A random text of letters and digits that are hard to mistake for one another.
QString randomCaptchaText(int length);

/// The text as a noisy picture, PNG. Needs neither a display nor fonts. Of the text only letters,
/// as capitals, and digits of ASCII are drawn.
QByteArray captchaPicture(const QString &text, int width, int height);
