// SPDX-License-Identifier: MIT
#pragma once

#include <passport/PassportCommunityError.h>

#include <QtWidgets/QWidget>

class CountdownButton;
class Field;
class QLineEdit;
class QPushButton;
class Requests;

/// The fields of a sign-in with a verification code: the captcha, which a click or the space key
/// replaces by another one, its characters, and the code that they have sent.
///
/// Outcomes are returned, for the page to show; pictureWanted() and sendWanted() ask it to call.
class CodeForm : public QWidget
{
    Q_OBJECT

public:
    explicit CodeForm(Requests &requests, QWidget *parent = nullptr);

    QString captcha() const;
    QString code() const;
    bool hasPicture() const { return m_hasPicture; }
    /// Whether sending a code is what the user has to do next.
    bool needsSending() const;
    QPushButton *sendButton() const;
    /// "captcha" and "code"; null for another name.
    Field *field(const QString &name) const;

    /// Empties the fields and fetches a captcha.
    VelqorPassPort::PassportCommunityError fetchPicture();
    /// Has a code sent to an account, by the answer to the captcha.
    VelqorPassPort::PassportCommunityError sendCode(const QString &account,
                                                    const QString &phoneArea);

Q_SIGNALS:
    /// What needsSending() says may have changed.
    void changed();
    void pictureWanted();
    void sendWanted();

private:
    void layOut();

    Requests &m_requests;
    QPushButton *m_picture;
    QLineEdit *m_captcha;
    CountdownButton *m_send;
    QLineEdit *m_code;
    Field *m_captchaField;
    Field *m_codeField;
    bool m_hasPicture = false;
};
