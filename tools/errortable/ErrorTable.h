// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QLocale>
#include <QtCore/QString>
#include <QtCore/QVector>

/// One row of libpassport/errors.tsv: what there is to say about an error code, or about a word in
/// which the account service refuses a request.
struct ErrorEntry
{
    enum class Kind { Code, Word };

    Kind kind;
    QString name;    ///< the code's key name or the word, spelled as callers get it
    int number;      ///< of a word: the code that it arrives as
    QString when;    ///< when it comes, one sentence
    QString retry;   ///< whether the same call may succeed again: "yes", "no" or "later"
    QString advice;  ///< for the developer
    QString field;   ///< "username", "password", "captcha" or "code"; empty: none is at fault
    QString english; ///< for the user
    QString chinese; ///< the same, simplified

    /// For the user, in Chinese or else in English.
    const QString &sentence(QLocale::Language language) const;
};

/// All rows, in the order of the file, which is part of the program. Callable from any thread.
const QVector<ErrorEntry> &errorTable();

/// The row that says most about an outcome: that of its message where this is a word, otherwise
/// that of its code; null for a code that the table does not have. Callable from any thread.
const ErrorEntry *findError(int code, const QString &message);
