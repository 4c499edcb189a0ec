// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace VelqorPassPort {

/// What the web tool's output says, cut out of one chunk of it.
///
/// Pure: every input, whatever its bytes, has a result. Each chunk stands for itself: a web tool
/// writes each report at once, and what it splits is not recognised.

/// The value between the first start marker and the first end marker of the chunk, as Latin-1 up to
/// its first zero byte; none unless both markers are there. An end marker before the start marker
/// ends nothing: the value is then all that follows the start marker.
std::optional<QString> valueBetween(const QByteArray &chunk, const QByteArray &startMarker,
                                    const QByteArray &endMarker);

/// The chunk as text: UTF-8 up to the first zero byte.
QString textOf(const QByteArray &chunk);

/// An account's details, in the steps in which they are cut out of a text.
struct AccountDetails
{
    QString untilEnd;   ///< the text before its first "end", or all of it
    QString afterStart; ///< what of that follows "start:"
    QStringList parts;  ///< split at single spaces; the first part stands before the first space

    QString userName() const { return parts.value(1); }
    QString password() const { return parts.value(2); }
    QString phoneArea() const { return parts.value(3); }
};

/// Both positions are those in the whole text, also when the "end" stands before the "start:".
/// Without a "start:" the details begin at position 5: its position is then -1, and its length 6.
AccountDetails accountDetails(const QString &text);

} // namespace VelqorPassPort
