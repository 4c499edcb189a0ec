// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// A new session token: 256 random bits in hexadecimal.
QString newToken();

/// What a store keeps of a token: of no use to a reader of its file.
QString hashToken(const QString &token);

/// In characters; the rules deny a new password that is shorter.
constexpr int minimumPasswordLength = 6;

/// A salted hash of a password in a text form that carries its own parameters:
/// "pbkdf2-sha256$iterations$salt$hash" (RFC 8018), salt and hash in base64.
QString hashPassword(const QString &password);

/// Whether the text has that form, and no more iterations than are checked in a moment.
bool isPasswordHash(const QString &text);

/// Whether the password is the one that was hashed. Takes the same time whatever the password is.
bool matchesPassword(const QString &password, const QString &hash);
