// SPDX-License-Identifier: MIT
#pragma once

#include <passport/PassportCommunityError.h>

#include <QtCore/QLocale>

/// The language that the window speaks: the first of the user's for which there are texts.
QLocale spokenLocale();

/// The same as the account service and its pages take it, such as "zh-cn".
QString spokenLanguageTag();

/// What to tell the user about an outcome, in their language; empty for a success.
QString sentenceFor(const VelqorPassPort::PassportCommunityError &outcome);

/// The input that an error is about: "username", "password", "captcha", "code", or empty.
QString inputAtFault(const VelqorPassPort::PassportCommunityError &outcome);
