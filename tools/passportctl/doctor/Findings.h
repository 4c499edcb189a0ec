// SPDX-License-Identifier: MIT
#pragma once

#include "../Output.h"

#include <QtCore/QVector>

/// Something that is wrong, or could not be looked at.
struct Finding
{
    enum class Severity {
        Error,   ///< a sign-in, or a part of what a host does, cannot work
        Warning, ///< it has no effect, or will do harm some day
        Note     ///< it is the host's own business, or could not be looked at
    };

    Severity severity;
    QString where;  ///< a path, a member of a file, an option or an address
    QString what;   ///< what is wrong there
    QString advice; ///< what to do about it
};

/// What a diagnosis brought to light: facts about what is there, and findings.
class Findings
{
public:
    /// `key` is the name in JSON. A number is shown with one decimal and its `unit`.
    void addFact(const char *key, const QString &label, const QJsonValue &value,
                 const QString &unit = QString());

    /// `exit`: how the program ends because of it.
    void addError(Exit exit, const QString &where, const QString &what, const QString &advice);
    void addWarning(const QString &where, const QString &what, const QString &advice);
    void addNote(const QString &where, const QString &what, const QString &advice);

    /// Prints facts and findings, errors first, after `good` or `bad`; as JSON together with
    /// `data`. The result is that of the first error.
    Exit print(const Output &output, const QString &good, const QString &bad,
               QJsonObject data = {});

private:
    Exit m_exit = Exit::Success;
    Output::Rows m_rows;
    QJsonObject m_facts;
    QVector<Finding> m_findings;
};
