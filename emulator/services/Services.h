// SPDX-License-Identifier: MIT
#pragma once

#include "services/AccountService.h"
#include "services/CaptchaService.h"
#include "services/CodeService.h"
#include "services/CountryService.h"
#include "services/RegistrationService.h"
#include "storage/Challenges.h"
#include "storage/Clock.h"
#include "storage/Sessions.h"
#include "storage/Settings.h"
#include "storage/Store.h"

/// What the account cloud is made of, each upon those before it. Used from the store's thread.
struct Services
{
    explicit Services(Store &store_) : store(store_) {}

    Store &store;
    Settings settings{store.database()};
    Clock clock{settings};
    Sessions sessions{store, settings, clock};
    Challenges challenges{store.database()};
    CaptchaService captchas{challenges, settings, clock};
    CodeService codes{store, challenges, captchas, settings, clock};
    AccountService accounts{store, sessions, captchas, codes, settings, clock};
    RegistrationService registrations{store, sessions, codes};
    CountryService countries{settings};
};
