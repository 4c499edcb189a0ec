// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QDeadlineTimer>
#include <QtCore/QTimer>
#include <QtWidgets/QPushButton>

#include <chrono>

/// A button that cannot be pressed for a while and shows how long that lasts.
class CountdownButton : public QPushButton
{
    Q_OBJECT

public:
    /// `waitingText` has "%1" for the seconds. The button has room for both texts.
    CountdownButton(const QString &text, const QString &waitingText, QWidget *parent = nullptr);

    void startCountdown(std::chrono::seconds duration);
    bool isCounting() const { return m_tick.isActive(); }

Q_SIGNALS:
    void countingChanged();

protected:
    void changeEvent(QEvent *event) override;

private:
    void tick();
    void makeRoom();

    QString m_text;
    QString m_waitingText;
    QDeadlineTimer m_end; // ticks alone would be late by what they are late each
    QTimer m_tick;
};
