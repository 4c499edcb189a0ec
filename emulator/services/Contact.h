// SPDX-License-Identifier: MIT
#pragma once

#include "http/Fields.h"

#include <QtCore/QString>

/// Where a verification code can be sent: an e-mail address or a phone number.
struct Contact
{
    QString name;
    QString phoneArea; ///< empty for an e-mail address

    /// From {"username","phoneArea"}: a name with "@" is an e-mail address, whose phone area is
    /// ignored. Throws Refusal for a name that is neither.
    static Contact read(const Fields &body);

    bool isPhone() const { return !phoneArea.isEmpty(); }
    /// Differs between any two contacts.
    QString key() const { return phoneArea + QLatin1Char(' ') + name; }
};
