// SPDX-License-Identifier: MIT
#include "services/RegistrationService.h"

#include "http/Fields.h"
#include "http/Refusal.h"
#include "services/Contact.h"
#include "services/Denial.h"
#include "storage/Secrets.h"

#include <algorithm>

namespace {

void setContact(Account &account, const Contact &contact)
{
    if (contact.isPhone()) {
        account.phone = contact.name;
        account.phoneArea = contact.phoneArea;
    } else {
        account.email = contact.name;
    }
}

// The same number exists in several areas, a user name only once.
Account newAccount(const Contact &contact, const QString &password)
{
    Account account;
    account.userName = contact.isPhone()
                           ? QStringLiteral("+%1 %2").arg(contact.phoneArea, contact.name)
                           : contact.name;
    account.setPassword(password);
    account.note = QStringLiteral("registered");
    setContact(account, contact);
    return account;
}

QString filledText(const Fields &body, const QString &key)
{
    QString text = body.text(key);
    if (text.trimmed().isEmpty())
        throw Refusal(400, QStringLiteral("field \"%1\" must not be blank").arg(key));
    return text;
}

bool namesContact(const Fields &body)
{
    const char *keys[] = {"username", "phoneArea", "captcha", "uuid", "validCode"};
    return std::any_of(std::begin(keys), std::end(keys),
                       [&](const char *key) { return body.has(QLatin1String(key)); });
}

} // namespace

Answer RegistrationService::registerUser(const Request &request)
{
    const Fields body(request.json());
    const Contact contact = Contact::read(body);
    const QString password = body.text(QStringLiteral("password"));
    const Account account = newAccount(contact, password);
    if (m_store.find(contact.name, contact.phoneArea) || m_store.find(account.userName, {}))
        throw Denial(Denial::existErr);
    if (password.size() < minimumPasswordLength)
        throw Denial(Denial::pwdTooShort); // the code can still be used
    m_codes.redeem(CodePurpose::registration, request.json());
    const QString userId = QString::number(m_store.add(account));
    return okAnswer(QJsonObject{{QStringLiteral("user_id"), userId}});
}

Answer RegistrationService::supplyInfo(const Request &request)
{
    const Fields body(request.json());
    QJsonObject company;
    for (const char *key : {"companyName", "companyType", "companyPurpose"})
        company.insert(QLatin1String(key), filledText(body, QLatin1String(key)));
    const std::optional<Contact> contact =
        namesContact(body) ? std::make_optional(Contact::read(body)) : std::nullopt;
    const QString token = request.headerValues(QStringLiteral("X-Auth-Token")).value(0);
    std::optional<Account> account = m_sessions.accountOf(token);
    if (!account)
        throw Denial(Denial::authErr);
    if (contact) {
        const std::optional<Account> owner = m_store.find(contact->name, contact->phoneArea);
        if (owner && owner->userId != account->userId)
            throw Denial(Denial::existErr);
        m_codes.redeem(CodePurpose::information, request.json());
        setContact(*account, *contact);
    }
    for (auto it = company.begin(); it != company.end(); ++it)
        account->profile.insert(it.key(), it.value());
    m_store.update(*account);
    return okAnswer(QJsonObject());
}
