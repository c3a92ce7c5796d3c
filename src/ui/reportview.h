// The week's report in place of the rows: one bar per day, stacked by timer in the theme's report
// colours, each timer's week total beside its name, the week's dates above. ← and → step through
// the weeks, Home comes back to this one, Esc closes. It reads the history once per week shown
// and per edit; a running timer redraws it on the display tick, at most once a second, and only
// when a figure changed.
#pragma once

#include "view.h"
#include "weekreport.h"

namespace tock {

class ReportView : public View {
    Q_OBJECT
public:
    ReportView(AppModel *model, QWidget *parent);

    bool isOpen() const { return open_; }
    // Opens on the week holding today (by the model's clock and the locale's first day).
    void open();
    void close();
    void toggle();
    // Shows the week starting on `start` (also while closed: it opens on that week next).
    void showWeek(QDate start);
    // Moves by `weeks` weeks, back when negative.
    void step(int weeks);

    const WeekReport &report() const { return report_; }
    // "Report: week of Nov 23 – 29, 2026": what a screen reader calls it.
    QString accessibleTitle() const;
    // A cell's text: "1:05:09", "0:00:00" for none.
    static QString duration(double seconds);

    // The height the report wants at its width, in unzoomed points.
    qreal preferredHeight() const;

Q_SIGNALS:
    void openChanged();
    // The figures or the week changed.
    void reportChanged();
    // preferredHeight() changed (a timer came into the week or left it).
    void heightChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    QDate currentWeek() const;
    // Reads the shown week again, then rebuilds.
    void reload();
    // The figures at the model's now from what was read.
    void rebuild();
    // The arrows at each side of the title, in unzoomed points.
    QRectF arrowRect(bool next) const;

    bool open_ = false;
    WeekHistory history_;
    WeekReport report_;
};

} // namespace tock
