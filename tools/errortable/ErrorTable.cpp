// SPDX-License-Identifier: MIT
#include "errortable/ErrorTable.h"

#include <QtCore/QFile>
#include <QtCore/QStringList>

// In a static library a resource has to be asked for, and outside of any namespace.
static void addResource()
{
    Q_INIT_RESOURCE(errortable);
}

namespace {

ErrorEntry entryOf(const QString &line)
{
    const QStringList columns = line.split(QLatin1Char('\t'));
    ErrorEntry entry;
    entry.kind =
        columns.value(0) == QLatin1String("word") ? ErrorEntry::Kind::Word : ErrorEntry::Kind::Code;
    entry.name = columns.value(1);
    entry.number = columns.value(2).toInt(nullptr, 16);
    entry.when = columns.value(3);
    entry.retry = columns.value(4);
    entry.advice = columns.value(5);
    if (columns.value(6) != QLatin1String("-"))
        entry.field = columns.value(6);
    entry.english = columns.value(7);
    entry.chinese = columns.value(8);
    return entry;
}

QVector<ErrorEntry> readTable()
{
    addResource();
    QFile file(QStringLiteral(":/libpassport/errors.tsv"));
    file.open(QIODevice::ReadOnly);
    const QStringList lines =
        QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts).mid(1);
    QVector<ErrorEntry> entries;
    entries.reserve(lines.size());
    for (const QString &line : lines)
        entries.append(entryOf(line));
    return entries;
}

} // namespace

const QString &ErrorEntry::sentence(QLocale::Language language) const
{
    return language == QLocale::Chinese ? chinese : english;
}

const QVector<ErrorEntry> &errorTable()
{
    static const QVector<ErrorEntry> table = readTable();
    return table;
}

const ErrorEntry *findError(int code, const QString &message)
{
    const ErrorEntry *ofCode = nullptr;
    for (const ErrorEntry &entry : errorTable()) {
        if (entry.kind == ErrorEntry::Kind::Word && entry.name == message)
            return &entry;
        if (entry.kind == ErrorEntry::Kind::Code && entry.number == code)
            ofCode = &entry;
    }
    return ofCode;
}
