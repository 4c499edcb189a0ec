#pragma once

#include <QtCore/QString>

#include <stdexcept>

/// The data file cannot be used; what() says in UTF-8 why.
class StoreError : public std::runtime_error
{
public:
    explicit StoreError(const QString &message) : std::runtime_error(message.toStdString()) {}
};
