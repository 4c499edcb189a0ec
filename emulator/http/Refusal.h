// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QString>

#include <exception>

/// A request that the emulator does not act on; travels as an exception to the place that answers.
class Refusal : public std::exception
{
public:
    Refusal(int httpStatus, const QString &text) : m_httpStatus(httpStatus), m_text(text) {}

    int httpStatus() const { return m_httpStatus; }
    QString text() const { return m_text; }
    const char *what() const noexcept override { return "request refused"; }

private:
    int m_httpStatus;
    QString m_text;
};
