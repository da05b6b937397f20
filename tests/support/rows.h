// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QtTest>

#include <array>
#include <initializer_list>
#include <tuple>

/// A test's whole table: the names of the columns, and in each row its name and one value for each
/// column.
///
///   addRows<int, QString>({"byte", "text"}, {{"zero", 0x00, "0"}, {"minus one", 0xFF, "-1"}});
template <typename... Columns>
void addRows(const std::array<const char *, sizeof...(Columns)> &columns,
             std::initializer_list<std::tuple<const char *, Columns...>> rows)
{
    const char *const *column = columns.data();
    (QTest::addColumn<Columns>(*column++), ...);
    for (const auto &row : rows) {
        std::apply([](const char *name,
                      const Columns &...values) { (QTest::newRow(name) << ... << values); },
                   row);
    }
}
