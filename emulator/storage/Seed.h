// SPDX-License-Identifier: MIT
#pragma once

#include "storage/Store.h"

#include <QtCore/QJsonObject>

#include <stdexcept>

/// The seed cannot be used; what() says in UTF-8 which account and field is wrong.
class SeedError : public std::runtime_error
{
public:
    explicit SeedError(const QString &message) : std::runtime_error(message.toStdString()) {}
};

/// What a new store starts with, read from JSON: {"accounts":[{...},...],"settings":{...}}, of
/// which the settings may be missing.
///
/// emulator/README.md lists the fields. Values are checked when the seed is read, and no two
/// accounts may answer to the same name.
class Seed
{
public:
    /// Reads a file; an empty path stands for the built-in seed. Throws SeedError.
    explicit Seed(const QString &path);
    /// Throws SeedError.
    explicit Seed(const QJsonObject &object) { read(object); }

    const Store::Contents &contents() const { return m_contents; }

    /// The seed that gives a store with these contents.
    static QJsonObject of(const Store::Contents &contents);

private:
    void read(const QJsonObject &object);
    void markBuiltIn(const QJsonObject &object);

    Store::Contents m_contents;
};
