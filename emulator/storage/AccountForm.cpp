// SPDX-License-Identifier: MIT
#include "storage/AccountForm.h"

#include "http/Fields.h"
#include "http/Refusal.h"
#include "storage/Secrets.h"

#include <QtCore/QJsonArray>
#include <QtCore/QStringList>

namespace {

const QString userName = QStringLiteral("username");
const QString password = QStringLiteral("password");
const QString passwordHash = QStringLiteral("passwordHash");
const QString locked = QStringLiteral("locked");
const QString orders = QStringLiteral("defaultDentalOrderReceive");

struct TextMember
{
    QString key;
    QString Account::*member;
};

// Texts that are members of the account itself; the others belong to its profile.
const QVector<TextMember> &ownTexts()
{
    static const QVector<TextMember> table = {{userName, &Account::userName},
                                              {QStringLiteral("note"), &Account::note},
                                              {QStringLiteral("email"), &Account::email},
                                              {QStringLiteral("phone"), &Account::phone},
                                              {QStringLiteral("phone_area"), &Account::phoneArea}};
    return table;
}

const QStringList &profileTexts()
{
    static const QStringList keys = {
        QStringLiteral("companyName"),  QStringLiteral("companyPurpose"),
        QStringLiteral("companyType"),  QStringLiteral("country"),
        QStringLiteral("factory_objs"), QStringLiteral("nick_name")};
    return keys;
}

const QStringList &profileLists()
{
    static const QStringList keys = {QStringLiteral("oems"), QStringLiteral("perms")};
    return keys;
}

void allowKnownMembers(const Fields &fields)
{
    QStringList known = profileTexts() + profileLists();
    known << password << passwordHash << locked << orders;
    for (const TextMember &text : ownTexts())
        known.append(text.key);
    fields.allowOnly(known);
}

void applyPassword(const Fields &fields, Account &account)
{
    if (fields.has(password) && fields.has(passwordHash))
        throw Refusal(400, QStringLiteral("give \"password\" or \"passwordHash\", not both"));
    if (fields.has(password)) {
        if (fields.text(password).isEmpty())
            throw Refusal(400, QStringLiteral("field \"password\" must not be empty"));
        account.setPassword(fields.text(password));
    } else if (fields.has(passwordHash)) {
        if (!isPasswordHash(fields.text(passwordHash))) {
            throw Refusal(400, QStringLiteral("field \"passwordHash\" must be a hash that the"
                                              " emulator has exported"));
        }
        account.passwordHash = fields.text(passwordHash);
        account.publicPassword.clear();
    }
}

} // namespace

QJsonObject accountForm(const Account &account)
{
    QJsonObject form = account.profile;
    for (const TextMember &text : ownTexts())
        form.insert(text.key, account.*text.member);
    form.insert(locked, account.locked);
    return form;
}

Account accountOfForm(const QJsonObject &form)
{
    const Fields fields(form);
    fields.text(userName);
    if (!fields.has(passwordHash))
        fields.text(password);
    Account account;
    applyAccountForm(form, account);
    return account;
}

void applyAccountForm(const QJsonObject &form, Account &account)
{
    const Fields fields(form);
    allowKnownMembers(fields);
    applyPassword(fields, account);
    for (const TextMember &text : ownTexts())
        account.*text.member = fields.text(text.key, account.*text.member);
    if (account.userName.isEmpty())
        throw Refusal(400, QStringLiteral("field \"username\" must not be empty"));
    account.locked = fields.flag(locked, account.locked);
    for (const QString &key : profileTexts()) {
        if (fields.has(key)) // an account without company fields is answered without them
            account.profile.insert(key, fields.text(key));
    }
    if (fields.has(orders))
        account.profile.insert(orders, fields.flag(orders, false));
    for (const QString &key : profileLists()) {
        if (fields.has(key))
            account.profile.insert(key, QJsonArray::fromStringList(fields.texts(key)));
    }
}
