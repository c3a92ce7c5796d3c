// The week's report as a screen reader meets it: a table named "Report: week of …" whose rows
// are the timers and then the total, whose columns are the seven days and then the week, each
// cell the time as the legend shows it.
#pragma once

class QAccessibleInterface;

namespace tock {

class ReportView;

QAccessibleInterface *reportAccessible(ReportView *view);

} // namespace tock
