// SPDX-License-Identifier: MIT
#pragma once

#include <passport/PassportCommunityError.h>

#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QVariantMap>

/// What scripts can tell apart. Fixed: documented in the tool's help.
enum class Exit {
    Success = 0,
    Refused = 1,      ///< the service answered and said no
    Usage = 2,        ///< the command line is wrong
    Unreachable = 3,  ///< no usable answer from the service
    Configuration = 4 ///< a local file or setting cannot be used
};

/// How a record ends the program.
Exit exitOf(const VelqorPassPort::PassportCommunityError &record);

/// A code as people write it, such as 0x05070003.
QString hexadecimal(int code);

/// What the table of errors says about an outcome.
struct ErrorText
{
    explicit ErrorText(const VelqorPassPort::PassportCommunityError &record);

    QString name;   ///< the service's word where there is one, which says more than its code's name
    QString when;   ///< what happened, without a full stop
    QString advice; ///< may be empty
    QString code;   ///< as people write it

    QString sentence() const { return QStringLiteral("%1 (%2, %3)").arg(when, name, code); }
};

/// Writes all of it to standard output, or throws std::system_error.
void writeStandardOutput(const QByteArray &text);

/// Prints results for a person or, with `json`, one JSON object on one line for a program. Results
/// go to standard output, a person's errors to standard error. Never prints a password or, unless
/// it is asked for, a token. Throws std::system_error when standard output takes no more.
///
/// Keys are in camelCase, "userID" being the service's own. What the library reports has its code,
/// any other failure that of the program's end.
class Output
{
public:
    using Rows = QList<QPair<QString, QString>>;

    explicit Output(bool json) : m_json(json) {}

    /// {"ok": true, ...data}, or `sentence` and a table.
    Exit success(const QString &sentence, const Rows &rows, const QJsonObject &data) const;

    /// For a program only, to which report() prints nothing.
    Exit success(const QJsonObject &data) const;

    /// {"ok": false, "error": {"code", "name", "message", "advice"}}, or the same in a sentence.
    Exit failure(const QString &operation,
                 const VelqorPassPort::PassportCommunityError &record) const;

    /// A failure that did not come from the library; as JSON together with `data`.
    Exit failure(Exit exit, const QString &sentence, const QJsonObject &data = {}) const;

    /// Findings that precede a failure, for a person only.
    void report(const QString &sentence, const Rows &rows) const;

    /// The rows of a map in the order of its keys, lists joined, nothing for empty values.
    static Rows rowsOf(const QVariantMap &map);

private:
    bool m_json;
};
