#pragma once

#include "storage/Store.h"

#include <QtCore/QJsonObject>

#include <stdexcept>
#include <vector>

/// The seed cannot be used; what() says in UTF-8 which account and field is wrong.
class SeedError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The accounts that a new store starts with, read from JSON: {"accounts":[{...},...]}.
///
/// emulator/README.md lists the fields. Values are checked when the seed is read, and no two
/// accounts may answer to the same name.
class Seed
{
public:
    /// Reads a file; an empty path stands for the built-in seed. Throws SeedError.
    explicit Seed(const QString &path);

    /// The accounts with freshly hashed passwords.
    Store::Accounts accounts() const;

private:
    struct Entry
    {
        Account account;
        QString password;
    };

    static Entry readEntry(const QJsonObject &object);
    void requireDistinctNames() const;

    std::vector<Entry> m_entries;
};
