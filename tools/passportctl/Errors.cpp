#include "Errors.h"

#include <common/ErrorCommon.h>

using namespace VelqorPassPort;

Exit explain(const QString &code, const Output &output)
{
    bool isNumber = false;
    const unsigned number = code.toUInt(&isNumber, 0);
    if (!isNumber)
        return output.failure(Exit::Usage, QStringLiteral("not a 32-bit number: ") + code);

    const QString hexadecimal = QStringLiteral("0x%1").arg(number, 8, 16, QLatin1Char('0'));
    const QString name = ErrorCommon::getModuleErrStr(number);
    const QString shortName = ErrorCommon::getModuleErrStrWithoutNS(number);
    Output::Rows rows{
        {QStringLiteral("code"), hexadecimal},
        {QStringLiteral("decimal"), QString::number(number)},
        {QStringLiteral("module"), QString::number(ErrorCommon::getModuleCode(number))},
        {QStringLiteral("name"), name}};
    QJsonObject data{{QStringLiteral("code"), static_cast<qint64>(number)},
                     {QStringLiteral("name"), name},
                     {QStringLiteral("shortName"), shortName}};
    const QString meaning = meaningOf(static_cast<CommunityErrorCode::ErrorCode>(number));
    if (!meaning.isEmpty()) {
        rows.append({QStringLiteral("meaning"), meaning});
        data.insert(QStringLiteral("meaning"), meaning);
    }
    return output.success(shortName, rows, data);
}
