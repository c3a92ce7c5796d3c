// One data row per style, named by its identifier, for the tests that run in every style.
#pragma once

#include "styleid.h"

#include <QTest>

namespace tock::testing {

inline void styleRows()
{
    QTest::addColumn<StyleID>("style");
    for (const StyleID style : StyleIDs::allCases())
        QTest::newRow(qPrintable(StyleIDs::rawValue(style))) << style;
}

} // namespace tock::testing
