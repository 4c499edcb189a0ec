// SPDX-License-Identifier: MIT
#pragma once

#include "http/Answer.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QStringList>

#include <optional>
#include <vector>

/// What is to go wrong with an answer.
struct Fault
{
    int id = 0;                   ///< of no other fault before or after
    QString request;              ///< the name of a request, "*" for any
    int timesLeft = -1;           ///< -1: always
    std::optional<Answer> answer; ///< given in place of the rules' answer
    Delivery delivery;            ///< how that answer, or the rules' own, is delivered
    QJsonObject description;      ///< as it was asked for
    QString kind() const { return description.value(QStringLiteral("kind")).toString(); }
};

/// The faults a developer has asked for, the oldest first.
class Faults
{
public:
    /// The names that a fault may be for, besides "*".
    void setRequestNames(const QStringList &names) { m_requestNames = names; }
    const QStringList &requestNames() const { return m_requestNames; }

    /// Adds a fault: {"request","kind",...,"times"}; the kinds and their fields are in
    /// emulator/README.md. Returns it with its "id". Throws Refusal with a sentence that lists what
    /// is known, and adds nothing.
    QJsonObject add(const QJsonObject &description);
    void clear() { m_faults.clear(); }
    bool remove(qint64 id); ///< false if there is none

    /// The first fault for this request, counted down; one that is spent is forgotten.
    std::optional<Fault> take(const QString &requestName);

    /// The faults in force as they were asked for, each with its "id", and "times" counted down.
    QJsonArray toJson() const;

    /// [{"kind","fields":[{"name","type":"text" or "number","optional","minimum","maximum"}]}]
    static QJsonArray kindsToJson();

private:
    QStringList m_requestNames;
    int m_lastId = 0;
    std::vector<Fault> m_faults;
};
