// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

/// What is at the path of a data file, found out without SQLite, which would repair, lock or
/// replace it.
struct DataFile
{
    QString path; ///< of the file itself, where a link was given
    bool isNew = false;

    /// Throws StoreError unless the path is free or leads to a file that the emulator has written
    /// and can write, with nothing but SQLite's logs where SQLite puts them. Changes nothing.
    static DataFile examine(const QString &path);
    /// Puts a finished file in the place of a new one, where still nothing may be; the draft stays
    /// as a second name of it. Throws StoreError.
    void create(const QString &draft) const;
};
