// SPDX-License-Identifier: MIT
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
    // Each EC_ code is reached from the cloud's code of the same meaning and carries its own key
    // name; the cloud library's own enumeration has a counterpart for each.
    void translatesCloudCodes_data()
    {
        const auto row = columns<int, int, QString>("cloudCode", "number", "name");
        const QMetaEnum keys = QMetaEnum::fromType<Code::ErrorCode>();
        const QMetaEnum cloudKeys = QMetaEnum::fromType<Nubelo::Error::ErrorCode>();
        for (int i = 0; i < keys.keyCount(); ++i) {
            const QString key = keys.key(i);
            if (!key.startsWith("EC_"))
                continue;
            const int cloudCode = keys.value(i) - 0x0506B101;
            const QString cloudKey = cloudKeys.valueToKey(cloudCode);
            QCOMPARE(cloudKey, key == "EC_IsRuning" ? "IsRunning" : key.mid(3));
            const bool isNoNet = QList<int>{0x5003, 0x7000, 0x7005}.contains(cloudCode);
            row(qPrintable(key), cloudCode, isNoNet ? int(Code::NetErr) : keys.value(i),
                isNoNet ? "NetErr" : key);
        }
        row("outside", 0x6000, 0x05071101, "");
        row("largest", INT_MAX, int(0x8506B100u), "");
    }

    void translatesCloudCodes()
    {
        QFETCH(int, cloudCode);
        PassportNubelo client;
        const auto record = client.setErrorCode(static_cast<Nubelo::Error::ErrorCode>(cloudCode));
        QTEST(int(record.errorCode), "number");
        QTEST(record.errorName, "name");
        QVERIFY(record.errorMessage.isEmpty() && record.errorData.isNull());
    }

    // A known word says nothing about the data, and only one of them something about the message.
    void translatesServerWords_data()
    {
        const auto row = columns<QString, int, QString, QString>("text", "code", "name", "message");
        row("any case, anywhere", "x-AUTHERR-y", Code::AuthErr, "AuthErr", "old");
        row("in JSON", R"({"e":"my pwdErr!"})", Code::AuthErr, "JsonErr", "pwdErr");
        row("database", "dbErr", Code::DbErr, "dbErr", "old");
        row("illegal", "ILLEGALerr", Code::IllegalErr, "illegalErr", "old");
        row("unknown", "unknownerr", Code::UnknownErr, "unknownErr", "old");
        row("two words", "dberr autherr", Code::AuthErr, "AuthErr", "old"); // first in our order
        row("another", "no such thing", Code::JsonErr, "no such thing", "no such thing");
        row("nothing", "", Code::JsonErr, "", "");
        row("JSON", R"({"grund":"ä"})", Code::JsonErr, R"({"grund":"ä"})", R"({"grund":"ä"})");
    }

    void translatesServerWords()
    {
        QFETCH(QString, text);
        QFETCH(QString, message);
        const QJsonDocument old(QJsonObject{{"old", 1}});
        PassportCommunityError record{Code::UrlErr, "old", "old", old};
        record.setErrorCode(text);
        QTEST(int(record.errorCode), "code");
        QTEST(record.errorName, "name");
        QCOMPARE(record.errorMessage, message);
        QCOMPARE(record.errorData, message == text ? QJsonDocument::fromJson(text.toUtf8()) : old);
    }
};

QTEST_GUILESS_MAIN(tst_ErrorCodes)
#include "tst_errorcodes.moc"
