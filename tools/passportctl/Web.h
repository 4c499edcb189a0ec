#pragma once

#include "Host.h"

#include <QtCore/QJsonArray>

struct WebOptions
{
    QString address; ///< of the page: a path below the web service's address, for open() a URL
    QString text;    ///< for the page, usually a language
    bool closes = false;
    bool showsSecrets = false;
};

/// A page of the account service in the web tool, from its start to its end.
///
/// Prints what the library's signals bring as they come, as JSON all of it at the end; tokens and
/// passwords only with `showsSecrets`. Each flow ends with Refused when the page was closed without
/// a result, and with Configuration when there is no web tool in the passport directory.
class Web
{
public:
    Web(Host &host, const WebOptions &options);

    Exit signIn();
    Exit signUp();
    Exit forgotten();
    /// Signs in first, asking for the password.
    Exit addInformation(const QString &user, const QString &phoneArea);
    Exit open();

private:
    void note(const QString &sentence, const Output::Rows &rows);
    QString secret(const QString &text) const;
    std::optional<Exit> prepare(const char *program);
    Exit end(const QString &missing) const;

    Host &m_host;
    WebOptions m_options;
    QJsonArray m_signals;
    bool m_hasResult = false;
};
