// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <chrono>
#include <optional>

/// What the web tool is to show, as its command line says.
///
/// A flow starts it with a page address, a text and a reload timeout in milliseconds; the flow that
/// completes an account's information with a page address, a session token, the web service's base
/// address and a text.
struct Start
{
    QUrl page;
    QString token;
    QString base;
    QString text; ///< handed to the page; when it is a language tag, the language to ask pages for
    std::optional<std::chrono::milliseconds> reloadTimeout; ///< none: a failed page stays

    /// Nothing, with a sentence in `problem`, unless the arguments (without the program's name) are
    /// three or four and the page is an http, https or file address.
    static std::optional<Start> fromArguments(const QStringList &arguments, QString &problem);

    /// Whether `initiator`, the origin of a page as the browser engine knows it (RFC 6454), is that
    /// of the page the tool was started with. A file has no origin to compare.
    bool isOwnOrigin(const QUrl &initiator) const;

    /// The text as a language tag (BCP 47); empty when it is none.
    QString language() const;

    /// The language that the page itself is asked for with lang=..., or else language().
    QString pageLanguage() const;
};
