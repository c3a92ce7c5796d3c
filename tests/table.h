// The one way the tests declare a data table: column names, then one tuple per row.
#pragma once

#include <QString>
#include <QTest>

#include <initializer_list>
#include <tuple>
#include <type_traits>

namespace tock {

// Declares the columns and adds one row per tuple, tagged by its number and, when the first
// column is text, that text.
template <typename... Cols>
void table(std::initializer_list<const char *> columns, std::initializer_list<std::tuple<Cols...>> rows)
{
    auto column = columns.begin();
    (QTest::addColumn<Cols>(*column++), ...);
    int n = 0;
    for (const auto &row : rows) {
        QString tag = QString::number(++n);
        if constexpr (std::is_same_v<std::tuple_element_t<0, std::tuple<Cols...>>, QString>)
            tag += u' ' + std::get<0>(row);
        for (QChar &c : tag) // line breaks would split the test log's line
            c = c.unicode() < 0x20 ? u'?' : c;
        QTestData &data = QTest::newRow(qPrintable(tag));
        std::apply([&](const auto &...value) { ((data << value), ...); }, row);
    }
}

} // namespace tock
