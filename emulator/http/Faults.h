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
    QString request;              ///< the name of a request, "*" for any
    int timesLeft = -1;           ///< -1: always
    std::optional<Answer> answer; ///< given in place of the rules' answer
    Delivery delivery;            ///< how that answer, or the rules' own, is delivered
    QJsonObject description;      ///< as it was asked for
};

/// The faults a developer has asked for, the oldest first.
class Faults
{
public:
    /// The names that a fault may be for, besides "*".
    void setRequestNames(const QStringList &names) { m_requestNames = names; }

    /// Adds a fault: {"request","kind",...,"times"}; the kinds and their fields are in
    /// emulator/README.md. Throws Refusal with a sentence that lists what is known, and adds
    /// nothing.
    void add(const QJsonObject &description);
    void clear() { m_faults.clear(); }

    /// The first fault for this request, counted down; one that is spent is forgotten.
    std::optional<Fault> take(const QString &requestName);

    /// The faults in force as they were asked for, with "times" counted down.
    QJsonArray toJson() const;

private:
    QStringList m_requestNames;
    std::vector<Fault> m_faults;
};
