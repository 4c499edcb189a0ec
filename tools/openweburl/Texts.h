// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// What the web tool itself says to the user, in one language.
struct Texts
{
    struct Notice
    {
        QString heading;
        QString sentence;
    };
    Notice noAnswer;
    Notice notFound;
    Notice notTrusted;
    QString tryAgain;
    QString trying;
    QString close;
    QString cut;
    QString copy;
    QString paste;
    QString selectAll;

    /// In Chinese for a language tag (BCP 47) of it, else in English.
    static const Texts &in(const QString &language);
};
