// SPDX-License-Identifier: MIT
#include "Files.h"

#include <cstdio>

#include <unistd.h>

Files::Files(const QString &input, const QString &output)
    : m_in(input)
    , m_file(output)
    , m_isNamed(!output.isEmpty())
{
}

Files::~Files()
{
    if (m_shownTotal > 0)
        std::fputs("\r\033[K", stderr);
}

const QFileDevice &Files::out() const
{
    return m_isNamed ? static_cast<const QFileDevice &>(m_file) : m_standardOutput;
}

bool Files::need(bool opened, const QFileDevice &file)
{
    if (!opened)
        m_problem = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
    return opened;
}

bool Files::open(QFileDevice::Permissions permissions)
{
    const bool readable = m_in.fileName().isEmpty() ? m_in.open(stdin, QIODevice::ReadOnly)
                                                    : m_in.open(QIODevice::ReadOnly);
    if (!need(readable, m_in))
        return false;
    constexpr qint64 large = 32 * 1024 * 1024;
    if (m_in.size() >= large && isatty(STDERR_FILENO) != 0)
        m_shownTotal = m_in.size();
    if (!m_isNamed)
        return need(m_standardOutput.open(stdout, QIODevice::WriteOnly), m_standardOutput);
    if (!need(m_file.open(QIODevice::WriteOnly), m_file))
        return false;
    if (permissions)
        m_file.setPermissions(permissions);
    return true;
}

QByteArray Files::read(qint64 size)
{
    // A pipe gives what it has.
    QByteArray piece = m_in.read(size);
    while (!piece.isEmpty() && piece.size() < size) {
        const QByteArray more = m_in.read(size - piece.size());
        if (more.isEmpty())
            break;
        piece += more;
    }
    m_read += piece.size();
    if (m_shownTotal > 0)
        showProgress();
    return piece;
}

void Files::showProgress() const
{
    constexpr int width = 40;
    const std::string bar(static_cast<std::size_t>(width * m_read / m_shownTotal), '#');
    std::fprintf(stderr, "\r[%-*s] %3lld%%", width, bar.c_str(),
                 static_cast<long long>(100 * m_read / m_shownTotal));
}

bool Files::write(const std::string &bytes)
{
    const auto size = static_cast<qint64>(bytes.size());
    m_written += size;
    return (m_isNamed ? m_file.write(bytes.data(), size)
                      : m_standardOutput.write(bytes.data(), size)) == size;
}

QString Files::writeError() const
{
    return QStringLiteral("%1: %2").arg(
        m_isNamed ? m_file.fileName() : QStringLiteral("standard output"), out().errorString());
}

bool Files::commit()
{
    return m_isNamed ? m_file.commit() : m_standardOutput.flush();
}
