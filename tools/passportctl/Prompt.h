// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <optional>

/// A signal that ends the program came during a question. Whoever catches it lets the signal have
/// its usual effect once everything is put away.
struct Interrupted
{
    int signal;
};

/// A secret typed by the user: on a terminal asked for without echo, otherwise the next line of
/// standard input. Nothing when there is no line at all. Throws Interrupted, also where the
/// terminal then shows again what is typed, and std::length_error when a line is too long. A
/// stopped program asks again when it goes on.
std::optional<QString> readSecret(const QString &question);

/// The same for what may be seen.
std::optional<QString> readAnswer(const QString &question);
