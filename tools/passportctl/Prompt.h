#pragma once

#include <QtCore/QString>

#include <optional>

/// A secret typed by the user: on a terminal asked for without echo, otherwise the first line of
/// standard input. Nothing when there is no line at all.
std::optional<QString> readSecret(const QString &question);

/// The same for what may be seen.
std::optional<QString> readAnswer(const QString &question);
