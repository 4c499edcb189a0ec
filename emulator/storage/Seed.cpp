#include "storage/Seed.h"

#include "http/Fields.h"
#include "http/Refusal.h"
#include "storage/Secrets.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QStringList>

namespace {

[[noreturn]] void fail(const QString &message)
{
    throw SeedError(message.toStdString());
}

QJsonArray readAccountList(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(QStringLiteral("cannot be read: ") + file.errorString());
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        fail(QStringLiteral("is not JSON: %1 at byte %2")
                 .arg(error.errorString())
                 .arg(error.offset));
    }
    if (!document.object().value(QStringLiteral("accounts")).isArray())
        fail(QStringLiteral("must be an object with a list \"accounts\""));
    return document.object().value(QStringLiteral("accounts")).toArray();
}

} // namespace

Seed::Seed(const QString &path)
{
    const QString source = path.isEmpty() ? QStringLiteral(":/storage/seed.json") : path;
    QString place = QStringLiteral("seed %1: ").arg(source);
    try {
        const QJsonArray accounts = readAccountList(source);
        for (int i = 0; i < accounts.size(); ++i) {
            place = QStringLiteral("seed %1: account %2: ").arg(source).arg(i);
            if (!accounts.at(i).isObject())
                fail(QStringLiteral("must be an object"));
            m_entries.push_back(readEntry(accounts.at(i).toObject()));
            requireDistinctNames();
        }
    } catch (const Refusal &refusal) {
        fail(place + refusal.text());
    } catch (const SeedError &error) {
        fail(place + QString::fromUtf8(error.what()));
    }
}

Seed::Entry Seed::readEntry(const QJsonObject &object)
{
    static const QStringList texts = {
        QStringLiteral("companyName"),  QStringLiteral("companyPurpose"),
        QStringLiteral("companyType"),  QStringLiteral("country"),
        QStringLiteral("factory_objs"), QStringLiteral("nick_name")};
    const QString oems = QStringLiteral("oems");
    const QString perms = QStringLiteral("perms");
    const QString orders = QStringLiteral("defaultDentalOrderReceive");
    const Fields fields(object);
    fields.allowOnly(texts + QStringList{QStringLiteral("username"), QStringLiteral("password"),
                                         QStringLiteral("note"), QStringLiteral("locked"),
                                         QStringLiteral("email"), QStringLiteral("phone"),
                                         QStringLiteral("phone_area"), oems, perms, orders});
    Entry entry;
    entry.account.userName = fields.text(QStringLiteral("username"));
    entry.password = fields.text(QStringLiteral("password"));
    if (entry.account.userName.isEmpty() || entry.password.isEmpty())
        fail(QStringLiteral("\"username\" and \"password\" must not be empty"));
    entry.account.note = fields.text(QStringLiteral("note"), QString());
    entry.account.locked = fields.flag(QStringLiteral("locked"), false);
    entry.account.email = fields.text(QStringLiteral("email"), QString());
    entry.account.phone = fields.text(QStringLiteral("phone"), QString());
    entry.account.phoneArea = fields.text(QStringLiteral("phone_area"), QString());

    QJsonObject &profile = entry.account.profile;
    for (const QString &key : texts) {
        if (fields.has(key)) // an account without company fields is answered without them
            profile.insert(key, fields.text(key));
    }
    profile.insert(orders, fields.flag(orders, false));
    profile.insert(oems, QJsonArray::fromStringList(fields.texts(oems)));
    profile.insert(perms, QJsonArray::fromStringList(fields.texts(perms)));
    return entry;
}

// A name to sign in with must lead to one account.
void Seed::requireDistinctNames() const
{
    const Account &newest = m_entries.back().account;
    for (std::size_t i = 0; i + 1 < m_entries.size(); ++i) {
        const Account &other = m_entries[i].account;
        for (const QString &name : {newest.userName, newest.email, newest.phone}) {
            const bool taken = name == other.userName || name == other.email ||
                               (name == other.phone && newest.phoneArea == other.phoneArea);
            if (!name.isEmpty() && taken)
                fail(QStringLiteral("\"%1\" also belongs to account %2").arg(name).arg(i));
        }
    }
}

Store::Accounts Seed::accounts() const
{
    Store::Accounts accounts;
    for (const Entry &entry : m_entries) {
        accounts.push_back(entry.account);
        accounts.back().passwordHash = hashPassword(entry.password);
    }
    return accounts;
}
