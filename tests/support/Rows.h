#pragma once

#include <QtTest/QtTest>

/// Declares the columns of a table of test data and returns what adds its rows, so that a row may
/// be written in any types that convert:
///
///     const auto row = columns<QString, int>("text", "code");
///     row("nothing", "", 0);
template <typename... Types, typename... Names>
auto columns(const Names *...names)
{
    (QTest::addColumn<Types>(names), ...);
    return [](const char *tag, const Types &...values) {
        QTestData &row = QTest::newRow(tag);
        ((row << values), ...);
    };
}
