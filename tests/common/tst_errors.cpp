#include "common/EObject.h"
#include "common/ErrorCommon.h"

#include <QtTest/QtTest>

class TestErrors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesOfCodes_data();
    void namesOfCodes();
    void lastErrorMarksBareCodes();
};

void TestErrors::namesOfCodes_data()
{
    QTest::addColumn<uint>("code");
    QTest::addColumn<QString>("module");
    QTest::addColumn<QString>("moduleWithoutNS");
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("libraryWithoutNS");

    const auto row = [](const char *name, uint code, const char *module,
                        const char *moduleWithoutNS, const char *library,
                        const char *libraryWithoutNS) {
        QTest::newRow(name) << code << QString::fromLatin1(module)
                            << QString::fromLatin1(moduleWithoutNS) << QString::fromLatin1(library)
                            << QString::fromLatin1(libraryWithoutNS);
    };
    row("no error", 0, "NoError", "NoError", "QtTunnelErrorCode::NoError", "NoError");
    row("library error", 12, "QtTunnelErrorCode::SharedMemoryError", "SharedMemoryError",
        "QtTunnelErrorCode::SharedMemoryError", "SharedMemoryError");
    row("unknown library error", 13, "QtTunnelErrorCode::Undefined", "Undefined",
        "QtTunnelErrorCode::Undefined", "Undefined");
    row("unknown library", 0x100, "UnknownLib_Error", "UnknownLib_Error", "UnknownLib_Error",
        "UnknownLib_Error");
    row("UnknownError is never named", 65535, "UnknownLib_Error", "UnknownLib_Error",
        "UnknownLib_Error", "UnknownLib_Error");
    row("module error without a module", 0x00070006, "QtTunnelErrorCode::TimeoutError",
        "TimeoutError", "QtTunnelErrorCode::TimeoutError", "TimeoutError");
    row("community error", 0x0507210e, "CommunityErrorCode::EC_IsRuning", "EC_IsRuning",
        "UnknownLib_Error", "UnknownLib_Error");
    row("unknown community error", 0x05079999, "CommunityErrorCode::Undefined", "Undefined",
        "UnknownLib_Error", "UnknownLib_Error");
    row("library error in the community", 0x05000006,
        "CommunityErrorCode::QtTunnelErrorCode::TimeoutError", "TimeoutError",
        "QtTunnelErrorCode::TimeoutError", "TimeoutError");
    row("community without an error", 0x05000000, "CommunityErrorCode::QtTunnelErrorCode::NoError",
        "NoError", "QtTunnelErrorCode::NoError", "NoError");
    row("unknown library in the community", 0x05000100, "CommunityErrorCode::UnknownLib_Error",
        "UnknownLib_Error", "UnknownLib_Error", "UnknownLib_Error");
    row("unknown module", 0x07000001, "UnkownModule_Error", "UnkownModule_Error",
        "QtTunnelErrorCode::ProtocolError", "ProtocolError");
    row("highest module", 0xff070001, "UnkownModule_Error", "UnkownModule_Error",
        "QtTunnelErrorCode::ProtocolError", "ProtocolError");
}

void TestErrors::namesOfCodes()
{
    QFETCH(uint, code);
    QTEST(ErrorCommon::getModuleErrStr(code), "module");
    QTEST(ErrorCommon::getModuleErrStrWithoutNS(code), "moduleWithoutNS");
    QTEST(ErrorCommon::getLibErrStr(code), "library");
    QTEST(ErrorCommon::getLibErrStrWithoutNS(code), "libraryWithoutNS");
    QCOMPARE(ErrorCommon::getModuleCode(code), code / 0x1000000);
}

void TestErrors::lastErrorMarksBareCodes()
{
    const EObject object;
    QCOMPARE(object.lastError(), 0U);
    object.setLastError(0);
    QCOMPARE(object.lastError(), 0x80000000U);
    object.setLastError(6);
    QCOMPARE(object.lastError(), 0x80000006U);
    object.setLastError(0x05070001);
    QCOMPARE(object.lastError(), 0x05070001U);
}

QTEST_APPLESS_MAIN(TestErrors)

#include "tst_errors.moc"
