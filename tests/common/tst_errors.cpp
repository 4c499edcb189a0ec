// SPDX-License-Identifier: MIT
#include "common/EObject.h"
#include "common/ErrorCommon.h"
#include "errortable/ErrorTable.h"
#include "passport/PassportCommunityError.h"
#include "services/Denial.h"
#include "support/Rows.h"

using namespace VelqorPassPort;

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

    void tableHasEachCodeAndWordOnce()
    {
        const auto codes = QMetaEnum::fromType<CommunityErrorCode::ErrorCode>();
        const auto denials = QMetaEnum::fromType<Denial::Word>();
        QStringList expected{"word dbErr", "word unknownErr"}; // the emulator itself sends neither
        for (int i = 0; i < codes.keyCount(); ++i)
            expected += QString("code ") + codes.key(i);
        for (int i = 0; i < denials.keyCount(); ++i)
            expected += QString("word ") + denials.key(i);

        QStringList found;
        const QRegularExpression raw("Err|EC_|0x|HTTP"), chinese("\\p{Han}");
        const QStringList fields{"", "username", "password", "captcha", "code"};
        for (const ErrorEntry &entry : errorTable()) {
            const bool isWord = entry.kind == ErrorEntry::Kind::Word;
            found += (isWord ? "word " : "code ") + entry.name;
            PassportCommunityError record;
            record.setErrorCode(entry.name);
            const int code = isWord ? record.errorCode : codes.keyToValue(entry.name.toLatin1());
            QVERIFY2(entry.number == code && fields.contains(entry.field) &&
                         QStringList({"yes", "no", "later"}).contains(entry.retry) &&
                         entry.when.endsWith('.') && entry.advice.endsWith('.') &&
                         entry.english.endsWith('.') && entry.chinese.contains(chinese) &&
                         !(entry.english + entry.chinese).contains(raw),
                     qPrintable(entry.name));
        }
        expected.sort();
        found.sort();
        QCOMPARE(found, expected);
    }
};

QTEST_APPLESS_MAIN(TestErrors)
#include "tst_errors.moc"
