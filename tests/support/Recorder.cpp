// SPDX-License-Identifier: MIT
#include "support/Recorder.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

namespace {

// One printf for a whole line, so that calls at the same time do not mix.
const char recordCall[] = R"(#!/bin/sh
RECORD='%RECORD%'
line="${0##*/}"
for argument in "$@"; do line="$line [$argument]"; done
printf '%s\n' "$line" >> "$RECORD"
)";

} // namespace

Recorder::Recorder() : m_path(qgetenv("PATH"))
{
    const QString bin = m_directory.filePath("bin");
    if (!QDir().mkpath(bin))
        qFatal("cannot create %s", qPrintable(bin));
    qputenv("PATH", QFile::encodeName(bin) + ':' + m_path);
}

Recorder::~Recorder()
{
    qputenv("PATH", m_path);
}

void Recorder::add(const QString &program, const QByteArray &script)
{
    QByteArray text(recordCall);
    text.replace("%RECORD%", QFile::encodeName(m_directory.filePath("record")));
    QFile file(programPath(program));
    if (!file.open(QIODevice::WriteOnly) || file.write(text + script + '\n') < 0 ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner)) {
        qFatal("cannot write %s", qPrintable(file.fileName()));
    }
}

QString Recorder::programPath(const QString &program) const
{
    return m_directory.filePath("bin/" + program);
}

QStringList Recorder::calls() const
{
    QFile file(m_directory.filePath("record"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}
