#include "Output.h"

#include <errortable/ErrorTable.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cstdio>

using namespace VelqorPassPort;

namespace {

// The service's word where there is one, which says more than the name of its code.
QString nameOf(const PassportCommunityError &record)
{
    return record.errorMessage.isEmpty() ? record.errorName : record.errorMessage;
}

// Another request library may report codes that the table does not have.
QString meaningOf(const ErrorEntry *entry)
{
    return entry ? entry->when : QStringLiteral("The service could not be used.");
}

QString adviceOf(const ErrorEntry *entry)
{
    return entry ? entry->advice : QString();
}

QString withoutFullStop(QString sentence)
{
    if (sentence.endsWith(QLatin1Char('.')))
        sentence.chop(1);
    return sentence;
}

} // namespace

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
    if (m_json) {
        QJsonObject object = data;
        object.insert(QStringLiteral("ok"), true);
        printObject(object);
    }
    report(sentence, rows);
    return Exit::Success;
}

void Output::report(const QString &sentence, const Rows &rows) const
{
    if (m_json)
        return;
    QTextStream out(stdout);
    out.setCodec("UTF-8");
    out << sentence << '\n';
    int width = 0;
    for (const auto &row : rows)
        width = std::max(width, row.first.size());
    for (const auto &row : rows)
        out << "  " << row.first.leftJustified(width) << "  " << row.second << '\n';
}

Exit Output::failure(const QString &operation, const PassportCommunityError &record) const
{
    const Exit exit = exitOf(record);
    const ErrorEntry *entry = findError(record.errorCode, record.errorMessage);
    if (m_json) {
        const QJsonObject error{{QStringLiteral("code"), static_cast<int>(record.errorCode)},
                                {QStringLiteral("name"), record.errorName},
                                {QStringLiteral("message"), record.errorMessage},
                                {QStringLiteral("text"), meaningOf(entry)},
                                {QStringLiteral("advice"), adviceOf(entry)}};
        printObject({{QStringLiteral("ok"), false}, {QStringLiteral("error"), error}});
        return exit;
    }
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << "passportctl: " << operation << ": " << withoutFullStop(meaningOf(entry)) << " ("
        << nameOf(record) << ", " << hexadecimal(record.errorCode) << ")\n";
    if (entry)
        err << "  " << entry->advice << '\n';
    return exit;
}

Exit Output::failure(Exit exit, const QString &sentence) const
{
    if (m_json) {
        printObject({{QStringLiteral("ok"), false},
                     {QStringLiteral("error"), QJsonObject{{QStringLiteral("text"), sentence}}}});
        return exit;
    }
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << "passportctl: " << sentence << '\n';
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

void Output::printObject(const QJsonObject &object) const
{
    const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
    std::fflush(stdout);
}
