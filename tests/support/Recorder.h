// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

/// Programs that record how they are called, found on PATH before all others.
///
/// PATH is put back at the end. A detached program may still be on its way when its starter
/// returns: compare with QTRY_COMPARE.
class Recorder
{
public:
    Recorder();
    ~Recorder();
    Q_DISABLE_COPY(Recorder)

    /// Adds a program of that name. It records its call and then runs the script, a few lines of
    /// POSIX sh in which $RECORD is the file of all calls, one line each.
    void add(const QString &program, const QByteArray &script = QByteArray());

    /// Where a program added under that name lies.
    QString programPath(const QString &program) const;

    /// Every call in order, the arguments in brackets: "ps [-A]".
    QStringList calls() const;

private:
    QTemporaryDir m_directory;
    QByteArray m_path;
};
