// SPDX-License-Identifier: MIT
#include "storage/Seed.h"

#include "http/Fields.h"
#include "http/Refusal.h"
#include "storage/AccountForm.h"
#include "storage/Settings.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

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
        const QJsonArray accounts = object.value(accountsKey).toArray();
        for (const QJsonValue &account : accounts) {
            place = QStringLiteral("account %1: ").arg(m_contents.accounts.size());
            readAccount(account);
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

void Seed::readAccount(const QJsonValue &value)
{
    if (!value.isObject())
        throw SeedError(QStringLiteral("must be an object"));
    m_contents.accounts.push_back(accountOfForm(value.toObject()));
    requireDistinctNames();
}

// A name to sign in with must lead to one account.
void Seed::requireDistinctNames() const
{
    const Account &newest = m_contents.accounts.back();
    for (std::size_t i = 0; i + 1 < m_contents.accounts.size(); ++i) {
        const Account &other = m_contents.accounts[i];
        for (const QString &name : {newest.userName, newest.email, newest.phone}) {
            const bool taken = name == other.userName || name == other.email ||
                               (name == other.phone && newest.phoneArea == other.phoneArea);
            if (!name.isEmpty() && taken)
                throw SeedError(
                    QStringLiteral("\"%1\" also belongs to account %2").arg(name).arg(i));
        }
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
