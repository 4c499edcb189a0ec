// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QUrl>

/// What a page may report, as the bytes that the account client looks for on standard output.
///
/// Pure. A page reports by requesting an address of the scheme "openweburl":
///
///     openweburl:signed-in?token=...&userId=...
///     openweburl:account?userName=...&password=...&phoneArea=...
///     openweburl:supplied
///     openweburl:close
///
/// The result ends in a line end and is at most 4096 bytes, which a pipe takes in one piece. It is
/// empty when the report is unknown, a value is missing, or the client would not read the values as
/// they are: it cuts an account's details at spaces and at the first "end", and takes a token for
/// Latin-1. The phone area alone may be empty.
QByteArray reportText(const QUrl &report);
