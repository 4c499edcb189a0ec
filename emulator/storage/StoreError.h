#pragma once

#include <stdexcept>

/// The data file cannot be used; what() says in UTF-8 why.
class StoreError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};
