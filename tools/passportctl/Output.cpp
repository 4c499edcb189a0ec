// SPDX-License-Identifier: MIT
#include "Output.h"

#include <errortable/ErrorTable.h>

#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

using namespace VelqorPassPort;

namespace {

QString withoutFullStop(QString sentence)
{
    if (sentence.endsWith(QLatin1Char('.')))
        sentence.chop(1);
    return sentence;
}

/// A name for failures that have no code of the library's.
QString nameOf(Exit exit)
{
    switch (exit) {
    case Exit::Refused:
        return QStringLiteral("RefusedError");
    case Exit::Usage:
        return QStringLiteral("UsageError");
    case Exit::Unreachable:
        return QStringLiteral("UnreachableError");
    case Exit::Configuration:
    case Exit::Success:
        break;
    }
    return QStringLiteral("ConfigurationError");
}

void printObject(QJsonObject object, bool ok)
{
    object.insert(QStringLiteral("ok"), ok);
    writeStandardOutput(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void printError(const QString &text)
{
    std::fputs(("passportctl: " + text.toUtf8() + '\n').constData(), stderr);
}

} // namespace

ErrorText::ErrorText(const PassportCommunityError &record)
    : name(record.errorName)
    , code(hexadecimal(record.errorCode))
{
    const ErrorEntry *entry = findError(record.errorCode, record.errorMessage);
    const bool isWord = entry && entry->kind == ErrorEntry::Kind::Word;
    // The record's own name of a refusal in words of the service's is that text again.
    if (entry)
        name = entry->name;
    if (!record.errorMessage.isEmpty() && !isWord)
        when = QStringLiteral("The service refused: ") + withoutFullStop(record.errorMessage);
    else // another request library may report codes that the table does not have
        when =
            entry ? withoutFullStop(entry->when) : QStringLiteral("The service could not be used");
    if (entry)
        advice = entry->advice;
}

void writeStandardOutput(const QByteArray &text)
{
    const auto size = static_cast<std::size_t>(text.size());
    if (std::fwrite(text.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        throw std::system_error(errno, std::generic_category(), "standard output");
}

QString hexadecimal(int code)
{
    return QStringLiteral("0x%1").arg(static_cast<unsigned>(code), 8, 16, QLatin1Char('0'));
}

Exit exitOf(const PassportCommunityError &record)
{
    switch (record.errorCode) {
    case CommunityErrorCode::NoError:
        return Exit::Success;
    case CommunityErrorCode::EC_ConfigDataError:
    case CommunityErrorCode::EC_FileNotExist:
    case CommunityErrorCode::EC_FileNotOpen:
        return Exit::Configuration;
    default:
        // What the service says has a code up to NetErr; the rest is the way to it.
        return record.errorCode < CommunityErrorCode::NetErr ? Exit::Refused : Exit::Unreachable;
    }
}

Exit Output::success(const QString &sentence, const Rows &rows, const QJsonObject &data) const
{
    report(sentence, rows);
    return success(data);
}

Exit Output::success(const QJsonObject &data) const
{
    if (m_json)
        printObject(data, true);
    return Exit::Success;
}

void Output::report(const QString &sentence, const Rows &rows) const
{
    if (m_json)
        return;
    QString text = sentence + QLatin1Char('\n');
    int width = 0;
    for (const auto &row : rows)
        width = std::max(width, row.first.size());
    for (const auto &row : rows)
        text += QStringLiteral("  %1  %2\n").arg(row.first.leftJustified(width), row.second);
    writeStandardOutput(text.toUtf8());
}

Exit Output::failure(const QString &operation, const PassportCommunityError &record) const
{
    const ErrorText text(record);
    const Exit exit = exitOf(record);
    if (m_json) {
        const QJsonObject error{{QStringLiteral("code"), static_cast<int>(record.errorCode)},
                                {QStringLiteral("name"), text.name},
                                {QStringLiteral("message"), text.when},
                                {QStringLiteral("advice"), text.advice}};
        printObject({{QStringLiteral("error"), error}}, false);
        return exit;
    }
    printError(QStringLiteral("%1: %2").arg(operation, text.sentence()));
    if (!text.advice.isEmpty())
        std::fputs(("  " + text.advice.toUtf8() + '\n').constData(), stderr);
    return exit;
}

Exit Output::failure(Exit exit, const QString &sentence, const QJsonObject &data) const
{
    if (!m_json) {
        printError(sentence);
        return exit;
    }
    QJsonObject object = data;
    object.insert(QStringLiteral("error"),
                  QJsonObject{{QStringLiteral("code"), static_cast<int>(exit)},
                              {QStringLiteral("name"), nameOf(exit)},
                              {QStringLiteral("message"), sentence},
                              {QStringLiteral("advice"), QString()}});
    printObject(object, false);
    return exit;
}

Output::Rows Output::rowsOf(const QVariantMap &map)
{
    Rows rows;
    for (auto field = map.begin(); field != map.end(); ++field) {
        const QString text =
            field->type() == QVariant::StringList || field->type() == QVariant::List
                ? field->toStringList().join(QStringLiteral(", "))
                : field->toString();
        if (!text.isEmpty())
            rows.append({field.key(), text});
    }
    return rows;
}
