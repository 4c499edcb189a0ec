// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QFile>
#include <QtCore/QSaveFile>

#include <string>

/// The file that a command reads and the one that it writes; without a name standard input and
/// output. A file that is to be replaced stays as it was until commit(). Shows a bar on standard
/// error while it reads a large file, on a terminal only.
class Files
{
public:
    Files(const QString &input, const QString &output);
    ~Files();
    Files(const Files &) = delete;
    Files &operator=(const Files &) = delete;

    /// Opens both, a new file with `permissions` unless there are none; false, with the reason in
    /// problem(), when one of them cannot be opened.
    bool open(QFileDevice::Permissions permissions);

    /// `size` bytes, fewer only at the end.
    QByteArray read(qint64 size);

    bool write(const std::string &bytes);
    bool commit();
    /// Where it could not be written, and why.
    QString writeError() const;

    const QString &problem() const { return m_problem; }
    bool writesNamedFile() const { return m_isNamed; }
    qint64 written() const { return m_written; }

private:
    const QFileDevice &out() const;
    bool need(bool opened, const QFileDevice &file);
    void showProgress() const;

    QFile m_in;
    QFile m_standardOutput;
    QSaveFile m_file;
    bool m_isNamed;
    qint64 m_shownTotal = 0; ///< of the bar; 0: none is shown
    qint64 m_read = 0;
    qint64 m_written = 0;
    QString m_problem;
};
