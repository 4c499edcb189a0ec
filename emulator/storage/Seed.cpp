// SPDX-License-Identifier: MIT
#include "storage/Seed.h"

#include "http/Fields.h"
#include "http/Refusal.h"
#include "storage/AccountForm.h"
#include "storage/Settings.h"

#include <QtCore/QFile>
#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QPair>

namespace {

const QString accountsKey = QStringLiteral("accounts");
const QString settingsKey = QStringLiteral("settings");
const QString passwordKey = QStringLiteral("password");
const QString hashKey = QStringLiteral("passwordHash");

QJsonObject readObject(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw SeedError(QStringLiteral("cannot be read: ") + file.errorString());
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        throw SeedError(QStringLiteral("is not JSON: %1 at byte %2")
                            .arg(error.errorString())
                            .arg(error.offset));
    }
    return document.object();
}

// Reads one account after the other.
class AccountReader
{
public:
    Account read(const QJsonValue &value);

private:
    Account hashedOnce(QJsonObject form);
    void requireOwnNames(const Account &account);

    int m_count = 0;
    QHash<QString, int> m_names;                  // user names and e-mails, and whose they are
    QHash<QPair<QString, QString>, int> m_phones; // each with its area
    QHash<QString, QString> m_hashes;             // by password
};

Account AccountReader::read(const QJsonValue &value)
{
    if (!value.isObject())
        throw SeedError(QStringLiteral("must be an object"));
    Account account = hashedOnce(value.toObject());
    requireOwnNames(account);
    ++m_count;
    return account;
}

// To hash a password takes a while, and the many accounts of a test often have the same.
Account AccountReader::hashedOnce(QJsonObject form)
{
    const QString password = form.value(passwordKey).toString();
    const QString hash = m_hashes.value(password);
    if (!hash.isEmpty() && !form.contains(hashKey)) {
        form.remove(passwordKey);
        form.insert(hashKey, hash);
    }
    Account account = accountOfForm(form);
    if (!password.isEmpty())
        m_hashes.insert(password, account.passwordHash);
    return account;
}

// A name to sign in with must lead to one account.
void AccountReader::requireOwnNames(const Account &account)
{
    for (const QString &name : {account.userName, account.email, account.phone}) {
        const int owner = m_names.value(name, m_phones.value({name, account.phoneArea}, m_count));
        if (!name.isEmpty() && owner != m_count)
            throw SeedError(
                QStringLiteral("\"%1\" also belongs to account %2").arg(name).arg(owner));
    }
    m_names.insert(account.userName, m_count);
    m_names.insert(account.email, m_count);
    m_phones.insert({account.phone, account.phoneArea}, m_count);
}

} // namespace

Seed::Seed(const QString &path)
{
    const QString source = path.isEmpty() ? QStringLiteral(":/storage/seed.json") : path;
    try {
        const QJsonObject object = readObject(source);
        read(object);
        if (path.isEmpty())
            markBuiltIn(object);
    } catch (const SeedError &error) {
        throw SeedError(QStringLiteral("seed %1: %2").arg(source, QString::fromUtf8(error.what())));
    }
}

void Seed::read(const QJsonObject &object)
{
    QString place;
    try {
        Fields(object).allowOnly({accountsKey, settingsKey});
        if (!object.value(accountsKey).isArray())
            throw SeedError(QStringLiteral("must be an object with a list \"accounts\""));
        AccountReader reader;
        const QJsonArray accounts = object.value(accountsKey).toArray();
        for (const QJsonValue &account : accounts) {
            place = QStringLiteral("account %1: ").arg(m_contents.accounts.size());
            m_contents.accounts.push_back(reader.read(account));
        }
        place = QStringLiteral("settings: ");
        m_contents.settings = object.value(settingsKey).toObject();
        if (object.contains(settingsKey) && !object.value(settingsKey).isObject())
            throw SeedError(QStringLiteral("must be an object"));
        Settings::check(m_contents.settings);
    } catch (const Refusal &refusal) {
        throw SeedError(place + refusal.text());
    } catch (const SeedError &error) {
        throw SeedError(place + QString::fromUtf8(error.what()));
    }
}

void Seed::markBuiltIn(const QJsonObject &object)
{
    for (std::size_t i = 0; i < m_contents.accounts.size(); ++i) {
        Account &account = m_contents.accounts[i];
        account.builtIn = true;
        account.publicPassword = object[accountsKey][static_cast<int>(i)][passwordKey].toString();
    }
}

QJsonObject Seed::of(const Store::Contents &contents)
{
    QJsonArray accounts;
    for (const Account &account : contents.accounts) {
        QJsonObject form = accountForm(account);
        if (account.publicPassword.isEmpty())
            form.insert(hashKey, account.passwordHash);
        else
            form.insert(passwordKey, account.publicPassword);
        accounts.append(form);
    }
    return {{accountsKey, accounts}, {settingsKey, contents.settings}};
}
