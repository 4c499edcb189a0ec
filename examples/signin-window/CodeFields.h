#pragma once

#include <QtWidgets/QWidget>

class QLineEdit;
class QPushButton;
class Requests;

/// The fields of a sign-in with a verification code: the captcha, which a click or the space key
/// replaces by another one, its characters, and the code that they have sent.
class CodeFields : public QWidget
{
    Q_OBJECT

public:
    explicit CodeFields(Requests &requests, QWidget *parent = nullptr);

    QString captcha() const;
    QString code() const;
    QPushButton *sendButton() const { return m_send; }

    /// Empties the fields and fetches a captcha; returns what there is to tell about that.
    QString renew();
    /// Has a code sent to an account, by the answer to the captcha.
    void sendCode(const QString &account, const QString &phoneArea);
    void focusCode();

Q_SIGNALS:
    void codeChanged();

private:
    Requests &m_requests;
    QPushButton *m_picture;
    QLineEdit *m_captcha;
    QPushButton *m_send;
    QLineEdit *m_code;
};
