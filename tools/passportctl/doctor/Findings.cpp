// SPDX-License-Identifier: MIT
#include "Findings.h"

#include <QtCore/QJsonArray>

#include <algorithm>

namespace {

QString nameOf(Finding::Severity severity)
{
    switch (severity) {
    case Finding::Severity::Error:
        return QStringLiteral("error");
    case Finding::Severity::Warning:
        return QStringLiteral("warning");
    case Finding::Severity::Note:
        break;
    }
    return QStringLiteral("note");
}

QString sentenceOf(const Finding &finding)
{
    return QStringLiteral("%1: %2").arg(finding.where, finding.what);
}

Output::Rows rowsOf(const QVector<Finding> &findings)
{
    Output::Rows rows;
    for (const Finding &finding : findings) {
        rows.append({nameOf(finding.severity), sentenceOf(finding)});
        rows.append({QString(), finding.advice});
    }
    return rows;
}

QJsonArray arrayOf(const QVector<Finding> &findings)
{
    QJsonArray array;
    for (const Finding &finding : findings)
        array.append(QJsonObject{{QStringLiteral("severity"), nameOf(finding.severity)},
                                 {QStringLiteral("where"), finding.where},
                                 {QStringLiteral("what"), finding.what},
                                 {QStringLiteral("advice"), finding.advice}});
    return array;
}

} // namespace

void Findings::addFact(const char *key, const QString &label, const QJsonValue &value,
                       const QString &unit)
{
    const QString text =
        value.isDouble() ? QString::number(value.toDouble(), 'f', 1) : value.toString();
    m_rows.append({label, unit.isEmpty() ? text : text + QLatin1Char(' ') + unit});
    m_facts.insert(QLatin1String(key), value);
}

void Findings::addError(Exit exit, const QString &where, const QString &what, const QString &advice)
{
    if (m_exit == Exit::Success)
        m_exit = exit;
    m_findings.append({Finding::Severity::Error, where, what, advice});
}

void Findings::addWarning(const QString &where, const QString &what, const QString &advice)
{
    m_findings.append({Finding::Severity::Warning, where, what, advice});
}

void Findings::addNote(const QString &where, const QString &what, const QString &advice)
{
    m_findings.append({Finding::Severity::Note, where, what, advice});
}

Exit Findings::print(const Output &output, const QString &good, const QString &bad,
                     QJsonObject data)
{
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const Finding &a, const Finding &b) { return a.severity < b.severity; });
    for (auto fact = m_facts.begin(); fact != m_facts.end(); ++fact)
        data.insert(fact.key(), fact.value());
    data.insert(QStringLiteral("findings"), arrayOf(m_findings));
    const bool isGood = m_exit == Exit::Success;
    output.report(isGood ? good : bad, m_rows);
    if (!m_findings.isEmpty())
        output.report(QStringLiteral("Findings"), rowsOf(m_findings));
    return isGood ? output.success(data)
                  : output.failure(m_exit, sentenceOf(m_findings.first()), data);
}
