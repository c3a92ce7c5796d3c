// `tock --report [RANGE]` and `tock --export csv|json [RANGE]`: the history read from a terminal.
// They only read (no lock, no file written), so they work while a window records beside them,
// and need nothing beyond Qt Core. A bad range, a bad format or a history that cannot be read
// is one line on standard error and exit status 1.
#pragma once

#include "timer.h"

#include <QDate>
#include <QString>
#include <QTextStream>

namespace tock {

// Over `directory`'s history.db at `now`, with weeks starting on `firstDay`.
int runReport(const QString &range, const QString &directory, Instant now, Qt::DayOfWeek firstDay, QTextStream &out,
              QTextStream &err);
int runExport(const QString &format, const QString &range, const QString &directory, Instant now,
              Qt::DayOfWeek firstDay, QTextStream &out, QTextStream &err);

// The same over Store::defaultDirectory(), the system clock and the locale's first day of the week.
int runReport(const QString &range);
int runExport(const QString &format, const QString &range);

} // namespace tock
