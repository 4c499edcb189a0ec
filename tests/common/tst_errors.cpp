#include "common/EObject.h"
#include "common/ErrorCommon.h"
#include "support/Rows.h"

class TestErrors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesOfCodes_data()
    {
        const auto row = columns<uint, QString, QString>("code", "module", "library");
        const char unknown[] = "UnknownLib_Error", timeout[] = "QtTunnelErrorCode::TimeoutError";
        const char noModule[] = "UnkownModule_Error",
                   protocol[] = "QtTunnelErrorCode::ProtocolError";
        row("no error", 0, "NoError", "QtTunnelErrorCode::NoError");
        row("library error", 6, timeout, timeout);
        row("unknown library error", 13, "QtTunnelErrorCode::Undefined",
            "QtTunnelErrorCode::Undefined");
        row("unknown library", 0x100, unknown, unknown);
        row("module error without a module", 0x00070006, timeout, timeout);
        row("community error", 0x0507210e, "CommunityErrorCode::EC_IsRuning", unknown);
        row("unknown community error", 0x05079999, "CommunityErrorCode::Undefined", unknown);
        row("library error in the community", 0x05000006,
            "CommunityErrorCode::QtTunnelErrorCode::TimeoutError", timeout);
        row("community without an error", 0x05000000,
            "CommunityErrorCode::QtTunnelErrorCode::NoError", "QtTunnelErrorCode::NoError");
        row("unknown library in the community", 0x05000100, "CommunityErrorCode::UnknownLib_Error",
            unknown);
        row("highest module", 0xff070001, noModule, protocol);
    }

    void namesOfCodes()
    {
        QFETCH(uint, code);
        QFETCH(QString, module);
        QFETCH(QString, library);
        QCOMPARE(ErrorCommon::getModuleErrStr(code), module);
        QCOMPARE(ErrorCommon::getModuleErrStrWithoutNS(code), module.section("::", -1));
        QCOMPARE(ErrorCommon::getLibErrStr(code), library);
        QCOMPARE(ErrorCommon::getLibErrStrWithoutNS(code), library.section("::", -1));
        QCOMPARE(ErrorCommon::getModuleCode(code), code / 0x1000000);
    }

    void lastErrorMarksBareCodes()
    {
        const EObject object;
        QCOMPARE(object.lastError(), 0U);
        object.setLastError(0);
        QCOMPARE(object.lastError(), 0x80000000U);
        object.setLastError(0x05070001);
        QCOMPARE(object.lastError(), 0x05070001U);
    }
};

QTEST_APPLESS_MAIN(TestErrors)
#include "tst_errors.moc"
