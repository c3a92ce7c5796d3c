// One timer's row: name, time, play/pause and reset, with the delete button a swipe uncovers
// underneath. The row's face slides by the model's row offset, animated; hovering reports the
// row to the model and a right click offers "Reset" and "Delete Timer".
#pragma once

#include "draw.h"
#include "themedbutton.h"
#include "view.h"

#include <QUuid>

class QVariantAnimation;

namespace tock {

class EditMask;
class FlapText;
class NameField;
struct ViewContext;

// The time display: redrawn by the shared display tick (only while its timer runs), and only
// its own rectangle. A click opens the time edit.
class LiveTimeButton : public ButtonView {
    Q_OBJECT
public:
    LiveTimeButton(AppModel *model, const ViewContext &context, QWidget *parent, QUuid id);
    // The width the time needs in unzoomed points for `text` (the digits' count matters).
    static qreal widthFor(const Theme &theme, const QString &text);
    static qreal heightFor(const Theme &theme);
    QString text() const;
    static QString accessibleText(const QString &time);
    // Current whenever a reader asks; only starts, pauses, resets and sets are announced.
    QString accessibleLabel() const override { return accessibleText(text()); }
    // The theme, zoom or the row's card changed: the split-flap tiles come, go or restyle.
    // `ground` is the flat card under the time, if it is flat.
    void restyle(std::optional<QColor> ground);
    FlapText *flapText() const { return flap_; }

Q_SIGNALS:
    // The shown text changed length (99:59:59 to 100:00:00): the row must make room.
    void widthChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void pressStateChanged() override {}

private:
    void onTick();
    void paintTiles(QPainter &painter, const QRectF &rect, const QString &text, bool running);
    const ViewContext &context_;
    QUuid id_;
    qsizetype shownLength_ = 0;
    FlapText *flap_ = nullptr; // the tiles, in themes that draw the time on them
    Draw::Layer well_;         // the recessed panel behind the digits, in themes that have one
};

// The delete button behind a row, uncovered when the row slides left.
class DeleteReveal : public ButtonView {
    Q_OBJECT
public:
    DeleteReveal(AppModel *model, QWidget *parent, QUuid id);
    // Where the sliding face's edge is, in unzoomed points from this view's left: only the part
    // to the right of it is drawn.
    void setUncovered(qreal left);
    qreal uncovered() const { return uncovered_; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void pressStateChanged() override {}

private:
    qreal uncovered_ = 0;
};

// A row of dots leading from the name to the time.
class LeaderDots : public View {
    Q_OBJECT
public:
    using View::View;

protected:
    void paintEvent(QPaintEvent *event) override;
};

class TimerRow : public View {
    Q_OBJECT
    Q_PROPERTY(qreal offset READ offset WRITE setOffset)
public:
    TimerRow(AppModel *model, const ViewContext &context, QWidget *parent, QUuid id);
    ~TimerRow() override;

    const QUuid &id() const { return id_; }
    // The row's position in the board (for tints and separators) and whether it is last.
    void setPlace(int index, bool isLast);
    int index() const { return index_; }

    // Height of the row's widget in unzoomed points (the card plus room for its shadow).
    static qreal widgetHeight(const Theme &theme);

    // The model's row offset changed: slides there with the swipe's timing.
    void followOffset(bool animated);
    qreal offset() const { return offset_; }
    void setOffset(qreal offset);

    // The card's colour now (its place's tint, hover, edit).
    QColor cardFill() const;

    // Something about this row changed (the timer, hover, edit, style): redraw and re-place.
    void refresh();
    void relayout();

    LiveTimeButton *timeButton() const { return time_; }
    ThemedButton *playButton() const { return play_; }
    ThemedButton *resetButton() const { return reset_; }
    DeleteReveal *deleteReveal() const { return reveal_; }
    NameField *nameField() const { return name_; }
    QWidget *face() const { return face_; }

    // The row's controls in Tab order: name, time (not while the mask has the keys),
    // start/pause, reset.
    QList<QWidget *> focusControls() const;
    // Which of name, time, start/pause and reset `widget` is (0 to 3), or -1; and back.
    int controlKind(const QWidget *widget) const;
    QWidget *control(int kind) const;
    // What a screen reader calls the row: its timer's name (or "Untitled") and its time.
    QString accessibleLabel() const;
    // The row's parts as a screen reader lists them, the sliding face left out.
    QList<QWidget *> accessibleChildren() const;
    // Offers "Reset" and "Delete Timer" at `globalPos`.
    void showMenu(const QPoint &globalPos);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    friend class RowFace;
    QRectF cardRect() const; // in the face's unzoomed points
    QString shownName() const;
    void followEdit(); // shows or drops the time mask
    QUuid id_;
    int index_ = 0;
    bool isLast_ = false;
    qreal offset_ = 0;
    DeleteReveal *reveal_;
    View *face_;
    NameField *name_;
    EditMask *mask_ = nullptr;
    bool maskFromKeys_ = false; // opened on the focused time: the focus comes back to it
    LeaderDots *dots_;
    LiveTimeButton *time_;
    ThemedButton *play_;
    ThemedButton *reset_;
    QVariantAnimation *slide_ = nullptr;
};

} // namespace tock
