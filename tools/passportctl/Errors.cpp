// SPDX-License-Identifier: MIT
#include "Command.h"

#include <common/ErrorCommon.h>
#include <common/QtTunnelErrorCode.h>

#include <errortable/ErrorTable.h>

#include <QtCore/QJsonArray>
#include <QtCore/QMetaEnum>

#include <algorithm>
#include <iterator>
#include <optional>

using namespace VelqorPassPort;

namespace {

class Errors : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addText(app, "error", m_error, "Number (decimal or 0x...), name or word; all if left out");
    }
    Exit run(Host &host) override;

private:
    QString m_error;
};

using Entries = QVector<ErrorEntry>;

bool isWord(const ErrorEntry &entry)
{
    return entry.kind == ErrorEntry::Kind::Word;
}

std::optional<int> numberOf(const QString &text)
{
    bool isNumber = false;
    const bool hasPrefix = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    const unsigned number = text.toUInt(&isNumber, hasPrefix ? 16 : 10);
    return isNumber ? std::make_optional(static_cast<int>(number)) : std::nullopt;
}

/// By number the code alone, by name also a word that differs from the code's name in case only.
Entries entriesOf(const QString &text)
{
    const std::optional<int> number = numberOf(text);
    Entries found;
    std::copy_if(errorTable().begin(), errorTable().end(), std::back_inserter(found),
                 [&](const ErrorEntry &entry) {
                     return number ? entry.number == *number && !isWord(entry)
                                   : entry.name.compare(text, Qt::CaseInsensitive) == 0;
                 });
    return found;
}

QStringList wordsThatArriveAs(const ErrorEntry &code)
{
    QStringList words;
    for (const ErrorEntry &entry : errorTable()) {
        if (isWord(entry) && !isWord(code) && entry.number == code.number)
            words.append(entry.name);
    }
    return words;
}

QJsonObject objectOf(const ErrorEntry &entry)
{
    const QJsonObject text{{QStringLiteral("en"), entry.english},
                           {QStringLiteral("zhCn"), entry.chinese}};
    return {
        {QStringLiteral("name"), entry.name},
        {QStringLiteral("kind"), isWord(entry) ? QStringLiteral("word") : QStringLiteral("code")},
        {QStringLiteral("code"), entry.number},
        {QStringLiteral("when"), entry.when},
        {QStringLiteral("retry"), entry.retry},
        {QStringLiteral("advice"), entry.advice},
        {QStringLiteral("field"), entry.field},
        {QStringLiteral("text"), text},
        {QStringLiteral("words"), QJsonArray::fromStringList(wordsThatArriveAs(entry))}};
}

Output::Rows rowsOf(const ErrorEntry &entry)
{
    Output::Rows rows{{isWord(entry) ? QStringLiteral("arrives as") : QStringLiteral("code"),
                       QStringLiteral("%1 (%2)").arg(hexadecimal(entry.number)).arg(entry.number)},
                      {QStringLiteral("when"), entry.when},
                      {QStringLiteral("try again"), entry.retry},
                      {QStringLiteral("advice"), entry.advice},
                      {QStringLiteral("for the user"), entry.english},
                      {QString(), entry.chinese}};
    const QStringList words = wordsThatArriveAs(entry);
    if (!words.isEmpty())
        rows.append({QStringLiteral("words"), words.join(QStringLiteral(", "))});
    return rows;
}

QString titleOf(const ErrorEntry &entry)
{
    return isWord(entry) ? entry.name + QStringLiteral(", a word of the service") : entry.name;
}

Exit list(const Output &output, const QJsonObject &data)
{
    Output::Rows rows;
    for (const ErrorEntry &entry : errorTable())
        rows.append({entry.name, hexadecimal(entry.number) + QStringLiteral("  ") + entry.when});
    return output.success(QStringLiteral("Error codes, and words with the codes they arrive as"),
                          rows, data);
}

/// Those of the hub's tunnel have a name and no row: the library itself reports none of them.
Exit explainWithoutRow(const Output &output, const QString &text)
{
    const int number = numberOf(text).value_or(-1);
    const QString name = ErrorCommon::getModuleErrStrWithoutNS(static_cast<unsigned>(number));
    const QMetaEnum tunnelErrors = QMetaEnum::fromType<QtTunnelErrorCode::ErrorCode>();
    if (tunnelErrors.keyToValue(name.toLatin1().constData()) < 0) {
        return output.failure(
            Exit::Usage,
            QStringLiteral("no error is %1; 'passportctl errors' lists all of them").arg(text));
    }
    const QJsonObject error{{QStringLiteral("name"), name},
                            {QStringLiteral("kind"), QStringLiteral("tunnel")},
                            {QStringLiteral("code"), number}};
    return output.success(name + QStringLiteral(", an error of the hub's tunnel"), {},
                          {{QStringLiteral("errors"), QJsonArray{error}}});
}

Exit Errors::run(Host &host)
{
    const Entries found = m_error.isEmpty() ? errorTable() : entriesOf(m_error);
    if (found.isEmpty())
        return explainWithoutRow(host.output(), m_error);

    QJsonArray errors;
    for (const ErrorEntry &entry : found)
        errors.append(objectOf(entry));
    const QJsonObject data{{QStringLiteral("errors"), errors}};
    if (m_error.isEmpty())
        return list(host.output(), data);
    for (int i = 0; i < found.size() - 1; ++i)
        host.output().report(titleOf(found[i]), rowsOf(found[i]));
    return host.output().success(titleOf(found.last()), rowsOf(found.last()), data);
}

} // namespace

void addErrorCommands(Commands commands)
{
    commands.add<Errors>("errors", "Explain error codes and the service's words",
                         "errors 0x05070101");
}
