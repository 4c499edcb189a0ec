// SPDX-License-Identifier: MIT
#pragma once

#include "Page.h"
#include "Texts.h"

#include <QtWidgets/QFrame>

class QLabel;
class QPushButton;
class QVBoxLayout;

/// What stands in the window in place of a page that could not be loaded.
///
/// A widget rather than a page, so that no page can go there or look the same to the browser
/// engine, and so that keys and screen readers find it as they find any window.
class FailurePanel : public QFrame
{
    Q_OBJECT

public:
    /// The texts must outlive it.
    explicit FailurePanel(const Texts &texts, QWidget *parent = nullptr);

    /// Says what is wrong with the address.
    void explain(Page::Failure failure, const QUrl &url);
    QString heading() const;

Q_SIGNALS:
    void tryAgainRequested();
    void closeRequested();

protected:
    /// Gives the focus to the button to try again.
    void showEvent(QShowEvent *event) override;

private:
    QVBoxLayout *addCard();
    QLabel *addLabel(const char *name);
    QPushButton *addButton(const QString &text);
    const Texts::Notice &notice(Page::Failure failure) const;

    const Texts &m_texts;
    QVBoxLayout *m_rows;
    QLabel *m_heading;
    QLabel *m_sentence;
    QLabel *m_address;
    QLabel *m_progress;
    QPushButton *m_tryAgain;
};
