#pragma once

#include "Host.h"

#include <QtCore/QString>

/// What the flows with captchas and verification codes ask for.
struct CodeOptions
{
    QString user;
    QString phoneArea;
    QString purpose; ///< of captcha and code, such as "login" or "bpwd"
    QString picture; ///< file for the captcha's picture; empty: one of the system's temporary files
    QString language;
    bool fromEmulator =
        false; ///< take captcha and code from a passport-emulator instead of the user
    bool remember = false;
};

/// The account operations behind a captcha. Each is one command from the picture to the end, since
/// a captcha belongs to the client that fetched it.
class CodeFlow
{
public:
    CodeFlow(Host &host, const CodeOptions &options) : m_host(host), m_options(options) {}

    Exit captcha();
    Exit sendCode();
    Exit codeSignIn();
    Exit exists();
    Exit resetPassword();

private:
    bool fetchCaptcha();
    bool solveCaptcha();
    bool obtainCode();
    bool ask(const QString &question, bool secret, QString &answer);
    QString captchaFromEmulator();
    QString codeFromEmulator();
    bool refused(const QString &operation, const VelqorPassPort::PassportCommunityError &record);

    Host &m_host;
    CodeOptions m_options;
    QString m_captcha; ///< the text in the picture
    QString m_code;
    Exit m_end = Exit::Success; ///< set by whatever returned false
};
