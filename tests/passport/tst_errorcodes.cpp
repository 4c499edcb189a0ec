#include "passport/PassportCommunityError.h"
#include "passport/PassportNubelo.h"
#include "support/Rows.h"

#include <QtCore/QJsonObject>
#include <QtCore/QMetaEnum>

using namespace VelqorPassPort;
using Code = CommunityErrorCode;

/// The two translations into records.
class tst_ErrorCodes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void translatesCloudCodes_data();
    void translatesCloudCodes();
    void translatesServerWords_data();
    void translatesServerWords();
};

// Each EC_ code is reached from the cloud's code of the same meaning and carries its own key name;
// the cloud library's own enumeration has a counterpart for each.
void tst_ErrorCodes::translatesCloudCodes_data()
{
    const auto row = columns<int, int, QString>("cloudCode", "number", "name");
    const QMetaEnum keys = QMetaEnum::fromType<Code::ErrorCode>();
    const QMetaEnum cloudKeys = QMetaEnum::fromType<Nubelo::Error::ErrorCode>();
    const QList<int> noNet{0x5003, 0x7000, 0x7005};
    for (int i = 0; i < keys.keyCount(); ++i) {
        const QString key = keys.key(i);
        if (!key.startsWith("EC_"))
            continue;
        const int cloudCode = keys.value(i) - 0x0506B101;
        const QString cloudKey = cloudKeys.valueToKey(cloudCode);
        QCOMPARE(cloudKey, key == "EC_IsRuning" ? "IsRunning" : key.mid(3));
        const bool isNoNet = noNet.contains(cloudCode);
        row(qPrintable(key), cloudCode, isNoNet ? int(Code::NetErr) : keys.value(i),
            isNoNet ? "NetErr" : key);
    }
    row("outside", 0x6000, 0x05071101, "");
    row("negative", -1, 0x0506B100, "");
    row("largest", INT_MAX, int(0x8506B100u), "");
}

void tst_ErrorCodes::translatesCloudCodes()
{
    QFETCH(int, cloudCode);
    PassportNubelo client;
    const auto record = client.setErrorCode(static_cast<Nubelo::Error::ErrorCode>(cloudCode));
    QTEST(int(record.errorCode), "number");
    QTEST(record.errorName, "name");
    QVERIFY(record.errorMessage.isEmpty() && record.errorData.isNull());
}

void tst_ErrorCodes::translatesServerWords_data()
{
    const auto add = columns<QString, int, QString, QString, QJsonDocument>("text", "code", "name",
                                                                            "message", "data");
    const auto row = [&](const QString &text, Code::ErrorCode code, const QString &name,
                         const QString &message, const QJsonDocument &data) {
        add(qPrintable(text), text, code, name, message, data);
    };
    // A known word says nothing about the data, and only one of them something about the message.
    const QJsonDocument old(QJsonObject{{"old", 1}});
    row("x-AUTHERR-y", Code::AuthErr, "AuthErr", "old", old);
    row("my pwdErr!", Code::AuthErr, "JsonErr", "pwdErr", old);
    row("dbErr", Code::DbErr, "dbErr", "old", old);
    row("ILLEGALerr", Code::IllegalErr, "illegalErr", "old", old);
    row("unknownerr", Code::UnknownErr, "unknownErr", "old", old);
    row("dberr autherr", Code::AuthErr, "AuthErr", "old", old); // not the first, but first in order
    row(R"({"e":"pwderr"})", Code::AuthErr, "JsonErr", "pwdErr", old);
    row("no such thing", Code::JsonErr, "no such thing", "no such thing", {});
    row("", Code::JsonErr, "", "", {});
    const QString json = QString::fromUtf8(R"({"grund":"gesperrt äöü"})");
    row(json, Code::JsonErr, json, json,
        QJsonDocument(QJsonObject{{"grund", QString::fromUtf8("gesperrt äöü")}}));
}

void tst_ErrorCodes::translatesServerWords()
{
    QFETCH(QString, text);
    PassportCommunityError record{Code::UrlErr, "old", "old",
                                  QJsonDocument(QJsonObject{{"old", 1}})};
    record.setErrorCode(text);
    QTEST(int(record.errorCode), "code");
    QTEST(record.errorName, "name");
    QTEST(record.errorMessage, "message");
    QTEST(record.errorData, "data");
}

QTEST_GUILESS_MAIN(tst_ErrorCodes)
#include "tst_errorcodes.moc"
