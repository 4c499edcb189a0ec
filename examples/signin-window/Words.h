#pragma once

#include <passport/PassportCommunityError.h>

/// What to tell the user about an outcome, in the user's language; empty for a success.
QString wordsFor(const VelqorPassPort::PassportCommunityError &outcome);
