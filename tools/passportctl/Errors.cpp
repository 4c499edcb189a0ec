#include "Command.h"

#include <common/ErrorCommon.h>

using namespace VelqorPassPort;

namespace {

class Errors : public Command
{
public:
    void declare(CLI::App &app) override
    {
        addRequiredText(app, "code", m_code, "32-bit number, decimal or 0x...");
    }
    Exit run(Host &host) override;

private:
    QString m_code;
};

Exit Errors::run(Host &host)
{
    bool isNumber = false;
    const unsigned number = m_code.toUInt(&isNumber, 0);
    if (!isNumber)
        return host.output().failure(Exit::Usage, QStringLiteral("not a 32-bit number: ") + m_code);

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
    return host.output().success(shortName, rows, data);
}

} // namespace

void addErrorCommands(Commands commands)
{
    commands.add<Errors>("errors", "Explain an error code");
}
