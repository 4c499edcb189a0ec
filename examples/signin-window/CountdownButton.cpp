// SPDX-License-Identifier: MIT
#include "CountdownButton.h"

#include <QtCore/QEvent>

CountdownButton::CountdownButton(const QString &text, const QString &waitingText, QWidget *parent)
    : QPushButton(text, parent)
    , m_text(text)
    , m_waitingText(waitingText)
{
    using namespace std::chrono_literals;
    m_tick.setInterval(200ms);
    connect(&m_tick, &QTimer::timeout, this, &CountdownButton::tick);
    makeRoom();
}

void CountdownButton::startCountdown(std::chrono::seconds duration)
{
    m_end.setRemainingTime(duration);
    m_tick.start();
    setEnabled(false);
    tick();
    Q_EMIT countingChanged();
}

void CountdownButton::changeEvent(QEvent *event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        makeRoom();
}

void CountdownButton::tick()
{
    const qint64 secondsLeft = (m_end.remainingTime() + 999) / 1000;
    if (secondsLeft > 0) {
        setText(m_waitingText.arg(secondsLeft));
        return;
    }
    m_tick.stop();
    setText(m_text);
    setEnabled(true);
    Q_EMIT countingChanged();
}

void CountdownButton::makeRoom()
{
    const QString now = text();
    setMinimumWidth(0);
    setText(m_waitingText.arg(99));
    const int waitingWidth = sizeHint().width();
    setText(m_text);
    setMinimumWidth(qMax(waitingWidth, sizeHint().width()));
    setText(now);
}
