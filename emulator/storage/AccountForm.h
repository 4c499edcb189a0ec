// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Store.h"

/// The form in which a seed names an account, and the developer's calls do: "username", "locked"
/// and so on, as emulator/README.md lists them.

/// Everything but the password.
QJsonObject accountForm(const Account &account);

/// A new account. Throws Refusal as below, and for a form without "username" or without "password"
/// and "passwordHash".
Account accountOfForm(const QJsonObject &form);

/// Changes what the object names and leaves the rest of the account as it is; a "password" is
/// hashed, a "passwordHash" taken over. Throws Refusal for an unknown member or a bad value.
void applyAccountForm(const QJsonObject &form, Account &account);
