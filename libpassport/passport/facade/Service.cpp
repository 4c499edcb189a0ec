// SPDX-License-Identifier: MIT
#include "passport/Passport.h"

#include "config/PassportDirectory_p.h"
#include "passport/OutcomeLog_p.h"
#include "passport/PassportNubelo.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QUrl>

namespace VelqorPassPort {

namespace {

QString localCopy(const QString &directory, const QString &language)
{
    return PassportDirectory(directory).privacyPolicy(
        language.contains(QLatin1String("zh-cn"))
            ? QStringLiteral("PrivacyPolicy-chinese-simplified.html")
            : QStringLiteral("PrivacyPolicy-english.html"));
}

// A copy that cannot be written is done without: the caller has the text.
void rewriteCopy(const QString &path, const QString &text)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.exists())
        file.remove();
    if (file.open(QIODevice::ReadWrite | QIODevice::Append)) {
        file.write(text.toUtf8());
        file.flush();
    }
}

QUrl pageOf(const QString &directory, const QString &copy)
{
    if (QFile::exists(copy))
        return QUrl(QStringLiteral("file://") + copy);
    // The directory before a complete address: so web tools have always been given it.
    return QUrl(directory + QStringLiteral("file:///privacypolicy/PrivacyPolicy-english.html"));
}

} // namespace

void Passport::reqGetPrivacy(QString &privacy, QString language, QString dir, bool openBrowser,
                             QString oemurl, QString reserved, QString source)
{
    Q_UNUSED(dir)
    Q_UNUSED(reserved)
    const QString directory = m_passportDir;
    const QString copy = localCopy(directory, language);
    const QPointer<Passport> self(this);
    const PassportCommunityError record =
        m_cloud->reqGetPrivacy(privacy, language, oemurl, source, QStringLiteral("privacy"));
    if (record.isError()) {
        logFailure("reqGetPrivacy error...", record);
    } else {
        qCDebug(log_lp) << "reqGetPrivacy success..." << privacy;
        rewriteCopy(copy, privacy);
    }
    qCDebug(log_lp) << "reqGetPrivacy passPortDir..." << directory;
    // A slot that ran during the wait may have destroyed this object.
    if (openBrowser && self)
        openURL(pageOf(directory, copy), language);
}

bool Passport::hasNet()
{
    const QJsonObject cloud = PassportDirectory(m_passportDir).cloudSection();
    QVariant ignored;
    const PassportCommunityError record =
        m_cloud->requestNubelo(ignored, cloud.value(QLatin1String("hasnet")).toString(),
                               Nubelo::Manager::Get, QVariantMap(), QVariantMap(), QVariantMap());
    if (record.isError())
        logFailure("hasNet error...", record);
    return !record.isError();
}

bool Passport::hasVelqorNet()
{
    const PassportCommunityError record = m_cloud->getNetByStatus();
    if (record.isError())
        logFailure("hasVelqorNet error...", record);
    return !record.isError();
}

PassportCommunityError Passport::reqSoftUp()
{
    return {};
}

} // namespace VelqorPassPort
