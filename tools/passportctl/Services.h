#pragma once

#include "Host.h"

// Account services that need no account.

/// A table of the countries whose name, code or calling code contains `filter`.
Exit listCountries(Host &host, const QString &filter);

/// The country that the caller's address belongs to.
Exit showCountry(Host &host);

/// The privacy policy's page. Leaves a copy in the passport directory.
Exit showPrivacy(Host &host, const QString &language, const QString &oem,
                 const QString &passportDir);

/// Whether the network and the account service can be reached.
Exit showReachability(Host &host);

/// The verification codes that a passport-emulator sent; with `wait` only those still to come.
Exit showInbox(Host &host, bool wait);

/// Has a passport-emulator spoil answers: a fault as its manual describes it, in JSON.
Exit addFault(Host &host, const QString &fault);
