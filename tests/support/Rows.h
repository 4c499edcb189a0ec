// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QFile>
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

/// A text file of test data that lies beside the test's source: `textOf(QFINDTESTDATA("name"))`.
inline QString textOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read \"%s\"", qPrintable(path));
    return QString::fromUtf8(file.readAll());
}
