// The whole content of the window: title bar, storage banner, rows, the empty hint or the week's
// report, footer,
// the style menu above them and the theme's overlay over everything. It lays its parts out at
// the zoom and reports the size the content wants, which the window follows.
#pragma once

#include "view.h"
#include "viewcontext.h"

#include <functional>

namespace tock {

class EmptyHint;
class FlapClock;
class FocusMark;
class Footer;
class NoticeBanner;
class ReportView;
class RowList;
class StyleMenu;
class TitleBar;

// What the views ask of the window they live in.
struct WindowActions {
    std::function<void()> close;
    std::function<void()> minimize;
    std::function<void()> showFiles;
};

class RootView : public View {
    Q_OBJECT
public:
    RootView(AppModel *model, QWidget *parent, WindowActions actions);

    // The content's size in unzoomed points, the rows capped so the window fits the screen.
    QSizeF contentSize() const;
    // The most the window's content may be tall, in unzoomed points.
    qreal heightCap() const;
    void setHeightCap(qreal cap);

    TitleBar *titleBar() const { return title_; }
    NoticeBanner *banner() const { return banner_; }
    RowList *rowList() const { return rows_; }
    // The week's report, shown in the rows' place while open.
    ReportView *reportView() const { return report_; }
    EmptyHint *emptyHint() const { return hint_; }
    Footer *footer() const { return footer_; }
    StyleMenu *styleMenu() const { return menu_; }

    // Animations off: every change shows at once (screenshots, benchmarks).
    void setAnimated(bool animated);
    bool isAnimated() const { return context_.animated; }
    // The one clock behind every split-flap tile of the window.
    FlapClock *flapClock() const { return context_.flapClock; }
    FocusMark *focusMark() const { return focusMark_; }

    // The controls Tab visits, in reading order: the style button; each row's name, time,
    // start/pause and reset; the add control; the toast's Undo and the banner's buttons while
    // they show. While the style menu is open, only its items. A null entry is the command
    // prompt, which has the keys when no control has the focus.
    QList<QWidget *> focusChain() const;
    // Moves the focus to the next or previous control, wrapping; true when it moved.
    bool moveFocus(bool next);
    // Keys that move the focus beyond Tab: Ctrl+Tab and F6 leave the prompt for the rows.
    bool focusKey(const QKeyEvent &event);

Q_SIGNALS:
    void contentSizeChanged();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    // Tab, Ctrl+Tab and F6 anywhere in the window, before the focused widget sees them.
    bool eventFilter(QObject *watched, QEvent *event) override;
    // A focused control that goes away (a closing editor, a deleted row) leaves no focus
    // behind, so a later Space cannot press a control the user never chose.
    bool focusNextPrevChild(bool next) override;

private:
    void relayout();
    void restyle();
    void boardChanged(const BoardChange &change);
    void hoverOrEditChanged();
    void offsetsChanged(bool animated);
    void noticeChanged();
    void menuChanged();
    void reportOpenChanged();
    qreal inset() const;

    // Set before the parts are built: the rows read them while the root is still constructing.
    qreal heightCap_ = 1e9;
    WindowActions actions_;
    ViewContext context_; // the rows hold on to it
    TitleBar *title_;
    NoticeBanner *banner_;
    RowList *rows_;
    ReportView *report_;
    EmptyHint *hint_;
    Footer *footer_;
    View *scrim_;
    StyleMenu *menu_;
    View *overlay_;
    FocusMark *focusMark_;
    QWidget *announcer_; // speaks for news that takes no focus (toast, output, banner, hint)
    QSizeF lastSize_;
};

} // namespace tock
