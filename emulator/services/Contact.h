#pragma once

#include "http/Fields.h"

#include <QtCore/QString>

/// Where a verification code can be sent: an e-mail address or a phone number.
struct Contact
{
    QString name;
    QString phoneArea; ///< empty for an e-mail address

    /// From {"username","phoneArea"}: a name with "@" is an e-mail address, whose phone area is of
    /// no matter. Throws Refusal for a name that is neither.
    static Contact read(const Fields &body);

    bool isPhone() const { return !phoneArea.isEmpty(); }
    /// The same for one contact alone, however its request was written.
    QString key() const { return phoneArea + QLatin1Char(' ') + name; }
};
