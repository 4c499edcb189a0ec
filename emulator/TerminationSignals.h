// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <array>
#include <memory>

/// Turns SIGINT, SIGTERM and SIGHUP into a Qt signal on the thread that created the object.
///
/// One object at a time. From construction on none of them ends the process by itself.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    void drain();

    std::array<int, 2> m_pipe{-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};
